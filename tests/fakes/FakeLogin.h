#pragma once

#include "BLE_kovra/platform/LoginService.h"

namespace kovra {

class FakeLogin : public LoginService {
  public:
    LoginStatus status() const override {
        ++reads;
        return current;
    }

    LoginStatus current = LoginStatus::notRegistered;
    mutable int reads = 0;
};

}  // namespace kovra
