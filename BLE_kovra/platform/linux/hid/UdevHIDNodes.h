#pragma once

#include <libudev.h>

#include <optional>
#include <string>
#include <vector>

#include "BLE_kovra/platform/linux/hid/UdevHIDDevice.h"
#include "BLE_kovra/platform/linux/loop/Handles.h"

namespace kovra {

using Udev = Handle<udev, udev_unref>;

// One node of the bus "hid", as it was when it was read.
struct UdevHIDNode {
    enum class State {
        gone,
        unreadable,  // for want of descriptors or memory it cannot be told whether there is one
        unbound,     // there, without a driver
        bound
    };

    State state = State::gone;
    // Of the last two states:
    std::optional<UdevHIDDevice> device = {};
    std::string driver = {};  // empty: unbound
    std::string phys = {};    // where it is connected, as its bus names such places
    std::string uniq = {};    // a serial number, or an address
};

// The nodes of the bus "hid", read from sysfs each time anew: what an event carries may be out of date, since drivers
// rename devices after the kernel has told of them. Needs neither udevd nor any right.
class UdevHIDNodes {
  public:
    explicit UdevHIDNodes(udev* context) : context_(context) {}

    // Those that can be seen: what is missing here is not necessarily gone.
    std::vector<std::string> names() const;
    static UdevHIDNode read(const std::string& name);

  private:
    udev* context_;
};

}  // namespace kovra
