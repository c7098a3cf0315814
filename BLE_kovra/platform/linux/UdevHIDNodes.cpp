#include "BLE_kovra/platform/linux/UdevHIDNodes.h"

#include <cerrno>
#include <string_view>
#include <utility>

namespace kovra {

namespace {

using Device = Handle<udev_device, udev_device_unref>;
using Enumeration = Handle<udev_enumerate, udev_enumerate_unref>;

constexpr const char* subsystem = "hid";

Device lookUp(udev* context, const std::string& name) {
    return Device(udev_device_new_from_subsystem_sysname(context, subsystem, name.c_str()));
}

UdevHIDNode notThere(int reason) {
    const bool isShortage = reason == EMFILE || reason == ENFILE || reason == ENOMEM;
    return {isShortage ? UdevHIDNode::State::unreadable : UdevHIDNode::State::gone, std::nullopt};
}

std::optional<std::string_view> property(udev_device* device, const char* key) {
    const char* value = udev_device_get_property_value(device, key);
    return value == nullptr ? std::nullopt : std::optional<std::string_view>(value);
}

}  // namespace

std::vector<std::string> UdevHIDNodes::names() const {
    const Enumeration enumeration(udev_enumerate_new(context_));
    if (!enumeration || udev_enumerate_add_match_subsystem(enumeration.get(), subsystem) < 0 ||
        udev_enumerate_scan_devices(enumeration.get()) < 0) {
        return {};
    }
    std::vector<std::string> names;
    udev_list_entry* entry = nullptr;
    udev_list_entry_foreach(entry, udev_enumerate_get_list_entry(enumeration.get())) {
        const std::string_view path = udev_list_entry_get_name(entry);
        names.emplace_back(path.substr(path.rfind('/') + 1));
    }
    return names;
}

UdevHIDNode UdevHIDNodes::read(const std::string& name) const {
    const Device device = lookUp(context_, name);
    if (!device) return notThere(errno);
    const auto hidID = property(device.get(), "HID_ID");
    // Every node has one. Without it the device may have gone between the two steps, and has then no name either.
    if (!hidID && !lookUp(context_, name)) return notThere(errno);
    const bool isBound = udev_device_get_driver(device.get()) != nullptr;
    return {isBound ? UdevHIDNode::State::bound : UdevHIDNode::State::unbound,
            UdevHIDDevice(name, hidID, property(device.get(), "HID_NAME"))};
}

}  // namespace kovra
