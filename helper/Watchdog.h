#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "helper/Loop.h"
#include "helper/Notifier.h"

namespace kovra::helper {

// The service manager's watchdog over this process. If the process hangs while a touchpad is muted, the manager kills
// it. The unit's ExecStopPost= then unmutes what the process has muted.
//
// The watchdog is on only while a touchpad is muted, so that the process does not wake up while none is. If the
// manager's queue has no room for turning it on or off, that is tried again after the time between two signs of life. A
// sign of life that does not fit is lost. After three of them the manager kills the process, which does no harm.
class Watchdog {
  public:
    // Sends a state to the service manager, without waiting (see Notifier).
    using Notify = std::function<Notifier::Result(const std::string& state)>;

    // The manager kills the process after `timeout` without a sign of life. The process sends one every `interval`.
    struct Timing {
        std::chrono::milliseconds timeout{6000};
        std::chrono::milliseconds interval{2000};
    };

    Watchdog(Loop& loop, Notify notify, Timing timing);
    Watchdog(Loop& loop, Notify notify) : Watchdog(loop, std::move(notify), Timing()) {}

    // Turns the watchdog on if any touchpad is muted, and off otherwise.
    void setMuted(bool isMuted);

  private:
    void setTime();
    void giveSignsOfLife();

    Loop& loop_;
    const Notify notify_;
    const Timing timing_;
    bool isMuted_ = false;
    std::unique_ptr<Loop::Watch> next_;
};

}  // namespace kovra::helper
