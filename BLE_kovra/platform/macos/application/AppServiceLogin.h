#pragma once

#include "BLE_kovra/platform/LoginService.h"

namespace kovra {

// The system's list of what starts at login, for the application itself.
class AppServiceLogin : public LoginService {
  public:
    LoginStatus status() const override;
    Outcome registerApplication() override;
    Outcome unregisterApplication() override;
};

}  // namespace kovra
