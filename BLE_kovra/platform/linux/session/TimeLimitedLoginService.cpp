#include "BLE_kovra/platform/linux/session/TimeLimitedLoginService.h"

#include <cerrno>
#include <utility>

#include "BLE_kovra/platform/posix/Refusal.h"

namespace kovra {

TimeLimitedLoginService::TimeLimitedLoginService(std::shared_ptr<LoginService> service, Limits limits)
    : service_(std::move(service)),
      limits_(limits),
      last_(std::make_shared<std::atomic<LoginStatus>>(LoginStatus::notRegistered)) {}

LoginStatus TimeLimitedLoginService::status() const {
    calls_.make([service = service_, last = last_] { *last = service->status(); }, limits_.read);
    return *last_;
}

Outcome TimeLimitedLoginService::registerApplication() { return change(&LoginService::registerApplication); }

Outcome TimeLimitedLoginService::unregisterApplication() { return change(&LoginService::unregisterApplication); }

Outcome TimeLimitedLoginService::change(Outcome (LoginService::*how)()) {
    const auto outcome = std::make_shared<Outcome>(Outcome::success());
    const auto call = [service = service_, outcome, how] { *outcome = ((*service).*how)(); };
    return calls_.make(call, limits_.change) ? *outcome : refusal(ETIMEDOUT);
}

}  // namespace kovra
