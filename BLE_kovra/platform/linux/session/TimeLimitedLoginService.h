#pragma once

#include <chrono>
#include <memory>

#include "BLE_kovra/platform/linux/desktop/FileLoginService.h"
#include "BLE_kovra/platform/linux/loop/TimeLimitedCalls.h"
#include "BLE_kovra/platform/linux/session/NotedFiles.h"

namespace kovra {

// Another login service, whose calls may hang because its files are in the user's home, on a disk or server that does
// not answer. The program reads the status at each decision, and must not wait for the disk before the next one.
//
// While a call hangs, status() returns the last known status at once, and changes are refused. While the kernel knows
// that no file of the service has changed, status() calls nothing.
class TimeLimitedLoginService : public LoginService {
  public:
    struct Limits {
        std::chrono::nanoseconds read = std::chrono::milliseconds(200);
        // Longer, since the user has asked for the change and expects its result.
        std::chrono::nanoseconds change = std::chrono::seconds(1);
    };

    explicit TimeLimitedLoginService(std::shared_ptr<FileLoginService> service)
        : TimeLimitedLoginService(service, {}) {}
    TimeLimitedLoginService(std::shared_ptr<FileLoginService> service, Limits limits);

    LoginStatus status() const override;
    // A change that takes too long is refused with ETIMEDOUT. It may still take place later.
    Outcome registerApplication() override;
    Outcome unregisterApplication() override;

  private:
    struct Reading {
        LoginStatus status = LoginStatus::notRegistered;
        NotedFiles files;
    };

    Outcome change(Outcome (LoginService::*how)());

    const std::shared_ptr<FileLoginService> service_;
    const Limits limits_;
    mutable std::shared_ptr<const Reading> last_ = std::make_shared<Reading>();
    mutable TimeLimitedCalls calls_;
};

}  // namespace kovra
