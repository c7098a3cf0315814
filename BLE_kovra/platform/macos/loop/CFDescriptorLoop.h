#pragma once

#include "BLE_kovra/platform/posix/DescriptorLoop.h"

namespace kovra {

class DispatchMainQueue;

// The watches of descriptors on the application's run loop, in its common modes. So their blocks run while an alert is
// open. They also run if a block of the main queue calls runUntil(), although no other block of the queue runs then.
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
