#pragma once

#include "BLE_kovra/platform/posix/DescriptorLoop.h"

namespace kovra {

class DispatchMainQueue;

// The application's run loop, for who waits for descriptors. They are heard in the common modes, also while an alert
// runs, and from inside a block of the main queue, where no other block runs.
class CFDescriptorLoop : public DescriptorLoop {
  public:
    explicit CFDescriptorLoop(const DispatchMainQueue& queue) : queue_(queue) {}

    std::unique_ptr<Watch> watch(int descriptor, std::function<void()> readable) override;
    void runUntil(const std::function<bool()>& done) override;
    bool isStopped() const override;

  private:
    const DispatchMainQueue& queue_;  // whose end is the application's
};

}  // namespace kovra
