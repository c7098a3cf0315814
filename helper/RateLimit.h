#pragma once

#include <algorithm>
#include <chrono>

namespace kovra::helper {

// Limits how often something is done: a number of times at once, and then once per interval. Times that were not used
// are saved, up to that number. The caller passes the time, which must not go backwards.
class RateLimit {
  public:
    using Clock = std::chrono::steady_clock;

    RateLimit(int burst, std::chrono::milliseconds interval) : interval_(interval), saved_((burst - 1) * interval) {}

    // How long to wait until it may be done again, rounded up. Zero if it may be done now.
    std::chrono::milliseconds delay(Clock::time_point now) const {
        const auto delay = std::chrono::ceil<std::chrono::milliseconds>(used_ - saved_ - now);
        return std::max(delay, std::chrono::milliseconds(0));
    }
    // Notes that it is done now.
    void use(Clock::time_point now) { used_ = std::max(used_, now) + interval_; }

  private:
    std::chrono::milliseconds interval_;
    std::chrono::milliseconds saved_;
    Clock::time_point used_;  // when all uses so far would be over if each had taken one interval
};

}  // namespace kovra::helper
