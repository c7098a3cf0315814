#pragma once

#include "BLE_kovra/platform/LoginService.h"

namespace kovra {

// Launch at login by freedesktop.org's autostart rules (0.5): an entry of this program's name in a folder
// "autostart", the user's own before the system's. The first that is found counts, also one that the desktop's own
// settings have edited.
//
// enabled: the desktop will start what the entry names. notRegistered: there is no entry, or it says no.
// requiresApproval: it says that it is not for this desktop. notFound: the program that it names is not there, or the
// user has no folder for entries.
class XdgLoginService : public LoginService {
  public:
    static constexpr const char* entryName = "org.ble_kovra.BLEKovra.desktop";

    LoginStatus status() const override;
    Outcome registerApplication() override { return Outcome::success(); }
    Outcome unregisterApplication() override { return Outcome::success(); }
};

}  // namespace kovra
