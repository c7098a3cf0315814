#pragma once

#include <functional>
#include <memory>

#include "helper/Descriptor.h"
#include "helper/Loop.h"

namespace kovra::helper {

// Rings when the computer has woken from sleep, or its clock was set: what had been said before may be out of date.
// Without the login manager's help, by a timer that is never due, and that the kernel cancels at both.
class ClockWatch {
  public:
    // Throws std::system_error where the system has no descriptor left for it.
    ClockWatch(Loop& loop, std::function<void()> onJump);

  private:
    void hear();

    Descriptor timer_;
    std::function<void()> onJump_;
    std::unique_ptr<Loop::Watch> watch_;
};

}  // namespace kovra::helper
