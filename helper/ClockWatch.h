#pragma once

#include <functional>
#include <memory>

#include "helper/Descriptor.h"
#include "helper/Loop.h"

namespace kovra::helper {

// Calls back when the computer has resumed from sleep or the real-time clock was set. Earlier notifications may then be
// out of date. It uses a timer that never expires and that the kernel cancels in both cases, so it needs no login
// manager.
class ClockWatch {
  public:
    // Throws std::system_error if the timer cannot be created.
    ClockWatch(Loop& loop, std::function<void()> onJump);

  private:
    void readTimer();

    Descriptor timer_;
    std::function<void()> onJump_;
    std::unique_ptr<Loop::Watch> watch_;
};

}  // namespace kovra::helper
