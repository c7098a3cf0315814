#pragma once

#include <libudev.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "BLE_kovra/platform/linux/hid/UdevHIDDevice.h"
#include "BLE_kovra/platform/linux/loop/Handles.h"

namespace kovra {

using Udev = Handle<udev, udev_unref>;

// A node of the bus "hid", as it was when it was read.
struct UdevHIDNode {
    enum class State {
        missing,
        unreadable,  // it may exist: no descriptors or memory are left, or the disk or the device failed
        unbound,     // it exists, without a driver
        bound
    };

    State state = State::missing;
    // Set in the states unbound and bound only:
    std::optional<UdevHIDDevice> device = {};
    std::string driver = {};  // empty if unbound
    std::string phys = {};    // where the device is connected, in the notation of its bus
    std::string uniq = {};    // the serial number or address of the device
};

// The nodes of the bus "hid". They are read from sysfs each time. An event may be out of date, because drivers rename
// devices after the kernel has announced them. Reading nodes needs neither udevd nor any privilege.
class UdevHIDNodes {
  public:
    explicit UdevHIDNodes(udev* context) : context_(context) {}

    // Returns the names of the nodes. Returns nullopt if they cannot be listed, for example without descriptors.
    std::optional<std::vector<std::string>> names() const;
    static UdevHIDNode read(const std::string& name);
    // Returns the node that has this name and this content of its file uevent.
    static UdevHIDNode parse(const std::string& name, std::string_view uevent);

  private:
    udev* context_;
};

}  // namespace kovra
