#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace kovra {

// A delayed block that can be cancelled. Destroying the task does not cancel the block.
class DelayedTask {
  public:
    virtual ~DelayedTask() = default;
    // Cancels the block if it has not started yet. Otherwise does nothing.
    virtual void cancel() = 0;
};

// The queue of the main thread, first in, first out.
//
// A block never runs inside async() or asyncAfter(), only from the event loop. A block queued during one turn runs in
// the next. After the application has terminated, no block runs.
class MainQueue {
  public:
    using Block = std::function<void()>;

    virtual ~MainQueue() = default;
    virtual void async(Block block) = 0;
    // Runs the block no earlier than `delay` from now. Time during which the machine sleeps does not count.
    virtual std::unique_ptr<DelayedTask> asyncAfter(std::chrono::nanoseconds delay, Block block) = 0;
};

}  // namespace kovra
