#pragma once

#include <functional>

#include "tests/platform/linux/loop/Turns.h"

namespace kovra {

// The event loop of Linux, for tests that run on each system's own.
class LoopRig {
  public:
    SdEventLoop& loop() { return loop_; }
    SdEventLoop& queue() { return loop_; }
    // Ends the application, as far as the loop knows.
    void stop() { loop_.stop(); }
    // Runs the loop until the condition holds. Returns false if it does not hold in time.
    bool turnUntil(const std::function<bool()>& condition) { return kovra::turnUntil(loop_, condition); }

  private:
    SdEventLoop loop_;
};

}  // namespace kovra
