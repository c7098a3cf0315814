#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <chrono>
#include <functional>

#include "BLE_kovra/platform/macos/loop/CFDescriptorLoop.h"
#include "BLE_kovra/platform/macos/loop/DispatchMainQueue.h"
#include "BLE_kovra/platform/macos/loop/EventQueue.h"

namespace kovra {

// The event loop of a Mac, for tests that run on each system's own. A program without AppKit has no events, only the
// run loop.
class LoopRig : private EventQueue {
  public:
    CFDescriptorLoop& loop() { return loop_; }
    DispatchMainQueue& queue() { return queue_; }
    // Ends the application, as far as the loop knows.
    void stop() { queue_.stop(); }
    // Runs the loop until the condition holds. Returns false if it does not hold in time.
    bool turnUntil(const std::function<bool()>& condition) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (!condition() && std::chrono::steady_clock::now() < end) sendNextEvent();
        return condition();
    }

  private:
    void sendNextEvent() override { CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.05, true); }
    void wake() override {}

    DispatchMainQueue queue_;
    CFDescriptorLoop loop_{queue_, *this};
};

}  // namespace kovra
