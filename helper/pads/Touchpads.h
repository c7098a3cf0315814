#pragma once

#include <libudev.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "helper/Handles.h"
#include "helper/Loop.h"

namespace kovra::helper {

// The input devices to mute, found through udev.
//
// An event of udev only causes a new scan, and only the scan decides. So a lost event has no effect after the next
// scan, and an outdated event never decides about a device.
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

    Handle<udev, udev_unref> udev_;
    Handle<udev_monitor, udev_monitor_unref> monitor_;
    std::unique_ptr<Loop::Watch> watch_;
    std::vector<std::string> inputs_;
};

}  // namespace kovra::helper
