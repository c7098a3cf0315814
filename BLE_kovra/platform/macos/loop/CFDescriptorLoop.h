#pragma once

#include "BLE_kovra/platform/posix/DescriptorLoop.h"

namespace kovra {

class DispatchMainQueue;
class EventQueue;

// Watches descriptors on the application's run loop, in its common modes. So the blocks of the watches also run while
// an alert is open, and while a block of the main queue calls runUntil(). During that call no other block of the queue
// runs.
//
// runUntil() takes the application's events, so that the menu, its items and the hot key work meanwhile. It evaluates
// `done` after each event and each block of a watch, and at no other time.
class CFDescriptorLoop : public DescriptorLoop {
  public:
    CFDescriptorLoop(const DispatchMainQueue& queue, EventQueue& events) : queue_(queue), events_(events) {}

    std::unique_ptr<Watch> watch(int descriptor, std::function<void()> readable) override;
    void runUntil(const std::function<bool()>& done) override;
    bool isStopped() const override;

  private:
    class DescriptorWatch;

    const DispatchMainQueue& queue_;  // stops when the application ends
    EventQueue& events_;
    int runs_ = 0;  // the number of calls of runUntil() that have not returned
};

}  // namespace kovra
