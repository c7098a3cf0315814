#include "BLE_kovra/platform/linux/windows/ProcessAlertPresenter.h"

#include <algorithm>
#include <variant>

#include "BLE_kovra/platform/linux/loop/SdEventLoop.h"
#include "BLE_kovra/platform/linux/session/ActivationToken.h"

namespace kovra {

namespace {

AlertResponse response(const AlertAnswered& answered, const Alert& alert) {
    if (!answered.button || *answered.button >= alert.buttons.size()) return AlertResponse::aborted;
    return static_cast<AlertResponse>(static_cast<int>(AlertResponse::firstButton) +
                                      static_cast<int>(*answered.button));
}

}  // namespace

ProcessAlertPresenter::ProcessAlertPresenter(SdEventLoop& loop, WindowProcess& process, ActivationToken& token)
    : loop_(loop), process_(process), token_(token) {
    listening_ = process_.listen([this](const ToResident& message) {
        if (const auto* answered = std::get_if<AlertAnswered>(&message)) receive(*answered);
    });
    ends_ = process_.listenForEnd([this] { abortAll(); });
}

AlertResponse ProcessAlertPresenter::runModal(const Alert& alert) {
    if (loop_.isStopped()) return AlertResponse::aborted;
    if (isOpen(alert) || stack_.size() == mostNested) {
        bringToFront();
        return AlertResponse::aborted;
    }
    const auto open = std::make_shared<Open>(Open{{++number_, token_.take(), alert}, {}});
    stack_.push_back(open);
    show();
    loop_.runUntil([&] { return open->answer.has_value(); });
    std::erase(stack_, open);
    return loop_.isStopped() ? AlertResponse::aborted : *open->answer;
}

bool ProcessAlertPresenter::isOpen(const Alert& alert) const {
    return std::any_of(stack_.begin(), stack_.end(),
                       [&](const auto& open) { return !open->answer && open->shown.alert == alert; });
}

void ProcessAlertPresenter::receive(const AlertAnswered& answered) {
    for (const auto& open : stack_) {
        if (open->shown.number != answered.number || open->answer) continue;
        open->answer = response(answered, open->shown.alert);
        show();
    }
}

void ProcessAlertPresenter::abortAll() {
    for (const auto& open : stack_) {
        if (!open->answer) open->answer = AlertResponse::aborted;
    }
    show();
}

void ProcessAlertPresenter::bringToFront() {
    const auto topmost = std::find_if(stack_.rbegin(), stack_.rend(), [](const auto& open) { return !open->answer; });
    if (topmost == stack_.rend()) return;
    (*topmost)->shown.activationToken = token_.take();
    ++fronts_;
    show();
}

// Shows the unanswered alerts only. An answered alert closes even while its caller still waits for the alerts above it.
void ProcessAlertPresenter::show() {
    ShowAlerts shown;
    if (fronts_ > 0) shown.front = fronts_;
    for (const auto& open : stack_) {
        if (!open->answer) shown.alerts.push_back(open->shown);
    }
    if (shown.alerts.empty())
        process_.closeAlerts();
    else
        process_.show(shown);
}

}  // namespace kovra
