#pragma once

#include <string>
#include <utility>

#include "BLE_kovra/platform/linux/desktop/FileLoginService.h"

namespace kovra {

// Launch at login by freedesktop.org's rules for autostart (0.5). A desktop entry named `entryName`, in a directory
// "autostart", makes the desktop start the program. The user's directory is searched before those of the system, and
// only the first entry found counts.
//
// status() returns `enabled` if the desktop starts the program that the entry names. It returns `notRegistered` if
// there is no entry or the entry is switched off, and `requiresApproval` if the entry excludes this desktop. It returns
// `notFound` if a program in the entry does not exist, the entry cannot be read, or the user has no directory for
// entries.
//
// Registering and unregistering change only the user's own entry, and each change is atomic. Other contents of the
// entry are preserved. If the entry is a symbolic link, the link is replaced or removed and its target is not changed.
// Unregistering removes an entry that contains only lines that registering writes. It hides any other entry by the key
// Hidden. If the system has an entry too, unregistering writes an entry for the user that hides the system's.
class XdgLoginService : public FileLoginService {
  public:
    static constexpr const char* entryName = "org.ble_kovra.BLEKovra.desktop";

    // `program` is the absolute path of the program to start.
    explicit XdgLoginService(std::string program) : program_(std::move(program)) {}

    LoginStatus read(const PathVisitor& visitor) const override;
    Outcome registerApplication() override;
    Outcome unregisterApplication() override;

  private:
    std::string program_;
};

}  // namespace kovra
