#include "helper/Watchdog.h"

#include <string>
#include <utility>

namespace kovra::helper {

Watchdog::Watchdog(Loop& loop, Notify notify, Timing timing)
    : loop_(loop), notify_(std::move(notify)), timing_(timing) {}

void Watchdog::setMuted(bool isMuted) {
    isMuted_ = isMuted;
    setTime();
}

// Setting the time also restarts the watchdog's period; 0 turns the watchdog off.
void Watchdog::setTime() {
    next_.reset();
    const std::chrono::microseconds time = isMuted_ ? timing_.timeout : std::chrono::milliseconds(0);
    const Notifier::Result result = notify_("WATCHDOG_USEC=" + std::to_string(time.count()));
    if (result == Notifier::Result::full) next_ = loop_.after(timing_.interval, [this] { setTime(); });
    if (result == Notifier::Result::sent && isMuted_) giveSignsOfLife();
}

void Watchdog::giveSignsOfLife() {
    next_ = loop_.after(timing_.interval, [this] {
        notify_("WATCHDOG=1");
        giveSignsOfLife();
    });
}

}  // namespace kovra::helper
