#pragma once

#include <libudev.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "helper/Backoff.h"
#include "helper/Handles.h"
#include "helper/Loop.h"

namespace kovra::helper {

// The input devices to mute, found through udev.
//
// An event of udev only causes a new scan, and only the scan decides. So a lost event has no effect after the next
// scan, and an outdated event never decides about a device. A scan that cannot read all devices is
// logged, and repeated after growing delays.
class Touchpads {
  public:
    // Throws std::system_error if the events of udev cannot be received.
    explicit Touchpads(Loop& loop);

    // The kernel's names, such as "input17", from the last scan.
    const std::vector<std::string>& inputs() const { return inputs_; }
    // Scans now. The constructor and each event of an input device cause a scan, too.
    void rescan();

    // Called when a scan finds other devices than the previous scan.
    std::function<void()> onChange;
    // Called after events of input devices, such as the removal of a mouse, and after lost events.
    std::function<void()> onEvent;

  private:
    void receiveEvents();
    // Returns whether the scan has found other devices than the previous one.
    bool scan();

    Loop& loop_;
    Handle<udev, udev_unref> udev_;
    Handle<udev_monitor, udev_monitor_unref> monitor_;
    std::unique_ptr<Loop::Watch> watch_;
    std::vector<std::string> inputs_;
    Backoff backoff_{std::chrono::seconds(1), std::chrono::minutes(1)};
    std::unique_ptr<Loop::Watch> retry_;  // of a failed scan
};

}  // namespace kovra::helper
