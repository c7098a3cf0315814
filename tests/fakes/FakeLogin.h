#pragma once

#include <optional>
#include <string>
#include <vector>

#include "BLE_kovra/platform/LoginService.h"

namespace kovra {

class FakeLogin : public LoginService {
  public:
    LoginStatus status() const override {
        ++reads;
        return current;
    }

    Outcome registerApplication() override { return change("register", afterRegistering); }
    Outcome unregisterApplication() override { return change("unregister", LoginStatus::notRegistered); }

    LoginStatus current = LoginStatus::notRegistered;
    LoginStatus afterRegistering = LoginStatus::enabled;
    std::optional<std::string> reasonToFail;
    std::vector<std::string> calls;
    mutable int reads = 0;

  private:
    Outcome change(const char* call, LoginStatus to) {
        calls.emplace_back(call);
        if (reasonToFail) return Outcome::failure(*reasonToFail);
        current = to;
        return Outcome::success();
    }
};

}  // namespace kovra
