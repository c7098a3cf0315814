#include "BLE_kovra/platform/linux/start/FirstMinute.h"

#include <utility>

namespace kovra {

FirstMinute::FirstMinute(MainQueue& queue, Desk desk)
    : desk_(std::move(desk)), timer_(queue.asyncAfter(patience, [this] { timeIsUp(); })) {}

FirstMinute::~FirstMinute() {
    if (timer_) timer_->cancel();
}

void FirstMinute::trayIsMissing() {
    isTrayMissing_ = true;
    if (isDecided_ || !hasLaunched_) return;
    if (timer_ && !desk_.isNothingChosen()) return;
    decide();
    if (!desk_.isAlertOpen()) desk_.openSettings();
}

void FirstMinute::launchEnded() {
    hasLaunched_ = true;
    if (isDecided_) return;
    // After the time is up, an earlier reply of the desktop may be out of date.
    if (!timer_)
        desk_.lookForTray();
    else if (isTrayMissing_)
        trayIsMissing();
}

void FirstMinute::timeIsUp() {
    timer_.reset();
    if (hasLaunched_) desk_.lookForTray();
}

void FirstMinute::decide() {
    isDecided_ = true;
    if (timer_) timer_->cancel();
    timer_.reset();
}

}  // namespace kovra
