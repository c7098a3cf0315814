#pragma once

#include <memory>

#include "BLE_kovra/platform/MainQueue.h"

namespace kovra {

// The system's main queue. The application's run loop drains it in its common modes, and therefore also while a menu or
// an alert is open.
//
// The system never runs a block inside another one, even if the block runs the run loop. A block that waits for an
// answer or for a program therefore delays all others. So open an alert from an event handler, not from a block.
//
// The system is asked not to delay a block of asyncAfter() in order to save power.
class DispatchMainQueue : public MainQueue {
  public:
    DispatchMainQueue();
    ~DispatchMainQueue() override;

    void async(Block block) override;
    std::unique_ptr<DelayedTask> asyncAfter(std::chrono::nanoseconds delay, Block block) override;

    // From then on no block runs and new blocks are dropped.
    void stop();
    bool isStopped() const;

  private:
    struct State;

    std::shared_ptr<State> state_;  // outlives the queue: the system may still hold blocks
};

}  // namespace kovra
