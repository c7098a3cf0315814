#pragma once

#include <libudev.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "helper/Handles.h"
#include "helper/Loop.h"
#include "helper/pads/PadRules.h"

namespace kovra::helper {

// Which input devices there are to mute, by udev. Its messages only say when to look: what is there now decides, so one
// that was lost costs nothing once the next look comes, and a device that was taken for another never counts.
class Touchpads {
  public:
    // Throws std::system_error where udev cannot be listened to.
    explicit Touchpads(Loop& loop);

    // The kernel's names, "input17", as of the last look: at the start, at each message, and when told to.
    const std::vector<std::string>& inputs() const { return inputs_; }
    void look();

    // Called when a look finds others than the last.
    std::function<void()> onChange;

  private:
    void hear();
    std::vector<InputProperties> everything() const;

    Handle<udev, udev_unref> udev_;
    Handle<udev_monitor, udev_monitor_unref> monitor_;
    std::unique_ptr<Loop::Watch> watch_;
    std::vector<std::string> inputs_;
};

}  // namespace kovra::helper
