#pragma once

#include <memory>

#include "BLE_kovra/platform/MainQueue.h"

namespace kovra {

// The system's main queue, which the application's run loop empties in its common modes: also while a menu is open or
// an alert runs.
//
// The system runs no second block inside a first, whatever turns the run loop in it: who waits inside a block (for an
// answer, or for a program) keeps all others waiting. So what opens an alert is called by its event, not from here.
class DispatchMainQueue : public MainQueue {
  public:
    DispatchMainQueue();
    ~DispatchMainQueue() override;

    void async(Block block) override;
    std::unique_ptr<DelayedTask> asyncAfter(std::chrono::nanoseconds delay, Block block) override;

    // From now on no block runs and nothing queues.
    void stop();
    bool isStopped() const;

  private:
    struct State;

    std::shared_ptr<State> state_;  // outlives the queue for blocks that the system still holds
};

}  // namespace kovra
