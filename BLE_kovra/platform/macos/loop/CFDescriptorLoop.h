#pragma once

#include "BLE_kovra/platform/posix/DescriptorLoop.h"

namespace kovra {

class DispatchMainQueue;

// Watches descriptors on the application's run loop, in its common modes. So the blocks of the watches also run while
// an alert is open, and while a block of the main queue calls runUntil(). During that call no other block of the queue
// runs.
class CFDescriptorLoop : public DescriptorLoop {
  public:
    explicit CFDescriptorLoop(const DispatchMainQueue& queue) : queue_(queue) {}

    std::unique_ptr<Watch> watch(int descriptor, std::function<void()> readable) override;
    void runUntil(const std::function<bool()>& done) override;
    bool isStopped() const override;

  private:
    const DispatchMainQueue& queue_;  // stops when the application ends
};

}  // namespace kovra
