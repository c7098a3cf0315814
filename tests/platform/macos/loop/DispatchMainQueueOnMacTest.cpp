#include <CoreFoundation/CoreFoundation.h>

#include <chrono>

#include "BLE_kovra/platform/macos/loop/DispatchMainQueue.h"
#include "tests/contracts/MainQueueContract.h"

namespace kovra {
namespace {

class DispatchOnMacDriver {
  public:
    MainQueue& queue() { return queue_; }
    void settle() {
        while (CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.01, true) == kCFRunLoopRunHandledSource) {
        }
    }
    void let(std::chrono::nanoseconds duration) {
        CFRunLoopRunInMode(kCFRunLoopDefaultMode, std::chrono::duration<double>(duration).count(), false);
    }
    std::chrono::nanoseconds now() const { return std::chrono::steady_clock::now().time_since_epoch(); }
    void terminate() { queue_.stop(); }

  private:
    DispatchMainQueue queue_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(DispatchMainQueueOnMac, MainQueueContract, DispatchOnMacDriver);

}  // namespace
}  // namespace kovra
