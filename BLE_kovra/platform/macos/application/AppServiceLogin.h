#pragma once

#include "BLE_kovra/platform/LoginService.h"

namespace kovra {

// The registration of the application itself in the system's list of login items.
//
// The user may have switched the application off in that list. Then only the user can switch it on again, so
// registerApplication() also opens the page of the system's settings that contains the list.
class AppServiceLogin : public LoginService {
  public:
    LoginStatus status() const override;
    Outcome registerApplication() override;
    Outcome unregisterApplication() override;
};

}  // namespace kovra
