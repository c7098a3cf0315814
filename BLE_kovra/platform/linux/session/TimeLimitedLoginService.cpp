#include "BLE_kovra/platform/linux/session/TimeLimitedLoginService.h"

#include <cerrno>
#include <utility>

#include "BLE_kovra/platform/posix/Refusal.h"

namespace kovra {

TimeLimitedLoginService::TimeLimitedLoginService(std::shared_ptr<FileLoginService> service, Limits limits)
    : service_(std::move(service)), limits_(limits) {}

LoginStatus TimeLimitedLoginService::status() const {
    if (!last_->files.areUnchanged()) {
        const auto reading = std::make_shared<Reading>();
        const auto read = [service = service_, reading] {
            reading->status = service->read([&](const std::string& path) { reading->files.note(path); });
        };
        if (calls_.make(read, limits_.read)) last_ = reading;
    }
    return last_->status;
}

Outcome TimeLimitedLoginService::registerApplication() { return change(&LoginService::registerApplication); }

Outcome TimeLimitedLoginService::unregisterApplication() { return change(&LoginService::unregisterApplication); }

Outcome TimeLimitedLoginService::change(Outcome (LoginService::*how)()) {
    const auto outcome = std::make_shared<Outcome>(Outcome::success());
    const auto call = [service = service_, outcome, how] { *outcome = ((*service).*how)(); };
    return calls_.make(call, limits_.change) ? *outcome : refusal(ETIMEDOUT);
}

}  // namespace kovra
