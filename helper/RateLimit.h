#pragma once

#include <algorithm>
#include <chrono>

namespace kovra::helper {

// A limit on how often something is done: `burst` times in a row, and then once per `interval`. For each interval
// without a use, one more use in a row is permitted, up to `burst`. The caller passes the current time, which must not
// go backwards.
class RateLimit {
  public:
    using Clock = std::chrono::steady_clock;

    RateLimit(int burst, std::chrono::milliseconds interval) : interval_(interval), saved_((burst - 1) * interval) {}

    // Returns how long to wait until the next use is permitted, rounded up. Zero if it is permitted now.
    std::chrono::milliseconds delay(Clock::time_point now) const {
        const auto delay = std::chrono::ceil<std::chrono::milliseconds>(used_ - saved_ - now);
        return std::max(delay, std::chrono::milliseconds(0));
    }
    // Records a use at this time.
    void use(Clock::time_point now) { used_ = std::max(used_, now) + interval_; }

  private:
    std::chrono::milliseconds interval_;
    std::chrono::milliseconds saved_;
    Clock::time_point used_;  // when the recorded uses would end if each took one interval
};

}  // namespace kovra::helper
