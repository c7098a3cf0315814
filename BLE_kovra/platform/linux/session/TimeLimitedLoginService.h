#pragma once

#include <atomic>
#include <chrono>
#include <memory>

#include "BLE_kovra/platform/LoginService.h"
#include "BLE_kovra/platform/linux/loop/TimeLimitedCalls.h"

namespace kovra {

// Another login service, whose calls may hang because its files are in the user's home, on a disk or server that does
// not answer. The program reads the status at each decision, and must not wait for the disk before the next one.
//
// While a call hangs, status() returns the last known status at once, and changes are refused.
class TimeLimitedLoginService : public LoginService {
  public:
    struct Limits {
        std::chrono::nanoseconds read = std::chrono::milliseconds(200);
        // Longer, since the user has asked for the change and expects its result.
        std::chrono::nanoseconds change = std::chrono::seconds(1);
    };

    explicit TimeLimitedLoginService(std::shared_ptr<LoginService> service) : TimeLimitedLoginService(service, {}) {}
    TimeLimitedLoginService(std::shared_ptr<LoginService> service, Limits limits);

    LoginStatus status() const override;
    // A change that takes too long is refused with ETIMEDOUT. It may still take place later.
    Outcome registerApplication() override;
    Outcome unregisterApplication() override;

  private:
    Outcome change(Outcome (LoginService::*how)());

    const std::shared_ptr<LoginService> service_;
    const Limits limits_;
    const std::shared_ptr<std::atomic<LoginStatus>> last_;
    mutable TimeLimitedCalls calls_;
};

}  // namespace kovra
