#include "helper/Watchdog.h"

#include <string>
#include <utility>

namespace kovra::helper {

Watchdog::Watchdog(Loop& loop, Notify notify, Timing timing)
    : loop_(loop), notify_(std::move(notify)), timing_(timing) {}

void Watchdog::setMuted(bool isMuted) {
    next_.reset();
    // Setting the time also restarts the watchdog's period; 0 turns the watchdog off.
    const std::chrono::microseconds time = isMuted ? timing_.timeout : std::chrono::milliseconds(0);
    const bool hasManager = notify_(("WATCHDOG_USEC=" + std::to_string(time.count())).c_str());
    if (isMuted && hasManager) giveSignsOfLife();
}

void Watchdog::giveSignsOfLife() {
    next_ = loop_.after(timing_.interval, [this] {
        notify_("WATCHDOG=1");
        giveSignsOfLife();
    });
}

}  // namespace kovra::helper
