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

// If an equal alert is open below another, its new caller takes it over from the earlier one. The new caller waits
// above all others, so it can act on the answer as soon as the user gives it.
AlertResponse ProcessAlertPresenter::runModal(const Alert& alert) {
    if (loop_.isStopped()) return AlertResponse::aborted;
    const std::shared_ptr<Open> equal = findOpen([&](const Open& open) { return open.shown.alert == alert; });
    if ((equal && equal == topmost()) || stack_.size() == mostNested) {
        bringToFront(equal ? equal : topmost());
        return AlertResponse::aborted;
    }
    const auto open = std::make_shared<Open>(Open{{equal ? equal->shown.number : ++number_, token_.take(), alert}, {}});
    if (equal) {
        equal->answer = AlertResponse::aborted;
        ++fronts_;
    }
    stack_.push_back(open);
    show();
    loop_.runUntil([&] { return open->answer.has_value(); });
    std::erase(stack_, open);
    return loop_.isStopped() ? AlertResponse::aborted : *open->answer;
}

std::shared_ptr<ProcessAlertPresenter::Open> ProcessAlertPresenter::findOpen(
    const std::function<bool(const Open&)>& isMeant) const {
    const auto found =
        std::find_if(stack_.rbegin(), stack_.rend(), [&](const auto& open) { return !open->answer && isMeant(*open); });
    return found == stack_.rend() ? nullptr : *found;
}

std::shared_ptr<ProcessAlertPresenter::Open> ProcessAlertPresenter::topmost() const {
    return findOpen([](const Open&) { return true; });
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

void ProcessAlertPresenter::bringToFront(const std::shared_ptr<Open>& open) {
    if (!open) return;
    std::erase(stack_, open);
    stack_.push_back(open);
    open->shown.activationToken = token_.take();
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
