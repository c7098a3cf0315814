#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <utility>

#include "helper/Loop.h"

namespace kovra::helper {

// Lets the service manager end this process if it hangs while a touchpad is muted. What the process has muted is then
// unmuted by ExecStopPost.
//
// The manager's watchdog is on only while a touchpad is muted. So there are no wake-ups while none is.
class Watchdog {
  public:
    // Sends a state to the service manager (sd_notify(3)). Returns false if there is none.
    using Notify = std::function<bool(const char* state)>;

    // The manager ends the process after `timeout` without a sign of life. There is one after each `interval`.
    struct Timing {
        std::chrono::milliseconds timeout{6000};
        std::chrono::milliseconds interval{2000};
    };

    Watchdog(Loop& loop, Notify notify, Timing timing);
    Watchdog(Loop& loop, Notify notify) : Watchdog(loop, std::move(notify), Timing()) {}

    // Whether a touchpad is muted now.
    void setMuted(bool isMuted);

  private:
    void giveSignsOfLife();

    Loop& loop_;
    const Notify notify_;
    const Timing timing_;
    std::unique_ptr<Loop::Watch> next_;
};

}  // namespace kovra::helper
