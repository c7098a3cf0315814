#pragma once

#include "BLE_kovra/platform/LoginService.h"

namespace kovra {

// The registration of the application itself in the system's list of login items.
class AppServiceLogin : public LoginService {
  public:
    LoginStatus status() const override;
    Outcome registerApplication() override;
    Outcome unregisterApplication() override;
};

}  // namespace kovra
