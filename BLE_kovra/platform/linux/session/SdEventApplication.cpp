#include "BLE_kovra/platform/linux/session/SdEventApplication.h"

#include <utility>

#include "BLE_kovra/platform/linux/desktop/AlertSound.h"
#include "BLE_kovra/platform/linux/loop/SdEventLoop.h"

namespace kovra {

void SdEventApplication::run(ApplicationDelegate& delegate) {
    delegate_ = &delegate;
    try {
        delegate.applicationDidFinishLaunching();
        launches_.call();
        loop_.run();
    } catch (...) {
        terminate();
        throw;
    }
    terminate();
}

void SdEventApplication::setActivationPolicy(ActivationPolicy) {}

void SdEventApplication::terminate() {
    loop_.stop();
    if (ApplicationDelegate* delegate = std::exchange(delegate_, nullptr)) delegate->applicationWillTerminate();
}

void SdEventApplication::beep() { playAlertSound(); }

void SdEventApplication::reopen() {
    if (delegate_ != nullptr) delegate_->applicationDidReopen();
}

void SdEventApplication::resume() {
    if (delegate_ != nullptr) delegate_->applicationDidResume();
}

void SdEventApplication::perform(ApplicationAction action) {
    if (delegate_ != nullptr) delegate_->applicationShouldPerform(action);
}

std::optional<ApplicationFacts> SdEventApplication::facts() const {
    return delegate_ == nullptr ? std::nullopt : std::optional(delegate_->facts());
}

}  // namespace kovra
