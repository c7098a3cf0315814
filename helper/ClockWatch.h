#pragma once

#include <functional>
#include <memory>

#include "helper/Descriptor.h"
#include "helper/Loop.h"

namespace kovra::helper {

// Calls back when the computer has resumed from sleep or its real-time clock was set. What is known about devices and
// users may then be out of date. The kernel cancels a timer with TFD_TIMER_CANCEL_ON_SET on both occasions, so no login
// manager is needed. The timer itself never expires.
class ClockWatch {
  public:
    // Throws std::system_error if the timer cannot be created or watched.
    ClockWatch(Loop& loop, std::function<void()> onJump);

  private:
    void readTimer();

    Descriptor timer_;
    std::function<void()> onJump_;
    std::unique_ptr<Loop::Watch> watch_;
};

}  // namespace kovra::helper
