#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace kovra {

// A delayed block that can still be called off. Letting go of it calls nothing off.
class DelayedTask {
  public:
    virtual ~DelayedTask() = default;
    // A block that has not started never runs. Afterwards, and a second time, it does nothing.
    virtual void cancel() = 0;
};

// The one queue of the one thread: whatever is to happen later happens here, first in, first out.
//
// A block never runs inside async or asyncAfter, only when the event loop turns. Blocks that a turn adds run in the
// next one. Once the application has terminated no block runs any more.
class MainQueue {
  public:
    using Block = std::function<void()>;

    virtual ~MainQueue() = default;
    virtual void async(Block block) = 0;
    // Never earlier than `delay` from now. The clock stands still while the machine sleeps.
    virtual std::unique_ptr<DelayedTask> asyncAfter(std::chrono::nanoseconds delay, Block block) = 0;
};

}  // namespace kovra
