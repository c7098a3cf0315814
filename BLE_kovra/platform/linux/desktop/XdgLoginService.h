#pragma once

#include <string>
#include <utility>

#include "BLE_kovra/platform/LoginService.h"

namespace kovra {

// Launch at login by freedesktop.org's autostart rules (0.5): an entry of this program's name in a folder
// "autostart", the user's own before the system's. The first that is found counts, also one that the desktop's own
// settings have edited.
//
// enabled: the desktop will start what the entry names. notRegistered: there is no entry, or it says no.
// requiresApproval: it says that it is not for this desktop. notFound: the program that it names is not there, or the
// user has no folder for entries.
//
// Registering and unregistering change the user's own entry alone, whole or not at all: what it says besides stays, a
// link in its place is replaced and what it leads to is left. Unregistering removes an entry that says no more than
// registering writes, and hides one that does; an entry of the system's is switched off by one of the user's that hides
// it.
class XdgLoginService : public LoginService {
  public:
    static constexpr const char* entryName = "org.ble_kovra.BLEKovra.desktop";

    // `program` is the absolute path of what is to be started.
    explicit XdgLoginService(std::string program) : program_(std::move(program)) {}

    LoginStatus status() const override;
    Outcome registerApplication() override;
    Outcome unregisterApplication() override;

  private:
    std::string program_;
};

}  // namespace kovra
