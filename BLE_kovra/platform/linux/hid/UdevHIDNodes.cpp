#include "BLE_kovra/platform/linux/hid/UdevHIDNodes.h"

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <utility>
#include <variant>

#include "BLE_kovra/platform/linux/hid/SysfsFile.h"

namespace kovra {

namespace {

using Enumeration = Handle<udev_enumerate, udev_enumerate_unref>;

constexpr const char* subsystem = "hid";
const std::string devicesFolder = "/sys/bus/hid/devices/";

// Whether the node may exist although it cannot be read now.
bool isPassing(int error) {
    return error == EMFILE || error == ENFILE || error == ENOMEM || error == EIO || error == EINTR;
}

// Returns the value of the first line NAME=VALUE. A device may supply a name with line feeds, but the kernel's DRIVER
// and HID_ID come before that name.
std::optional<std::string_view> property(std::string_view uevent, std::string_view name) {
    while (!uevent.empty()) {
        const std::string_view line = uevent.substr(0, uevent.find('\n'));
        uevent.remove_prefix(std::min(line.size() + 1, uevent.size()));
        if (line.starts_with(name) && line.substr(name.size()).starts_with('=')) return line.substr(name.size() + 1);
    }
    return std::nullopt;
}

}  // namespace

std::optional<std::vector<std::string>> UdevHIDNodes::names() const {
    const Enumeration enumeration(udev_enumerate_new(context_));
    if (!enumeration || udev_enumerate_add_match_subsystem(enumeration.get(), subsystem) < 0 ||
        udev_enumerate_scan_devices(enumeration.get()) < 0) {
        return std::nullopt;
    }
    std::vector<std::string> names;
    udev_list_entry* entry = nullptr;
    udev_list_entry_foreach(entry, udev_enumerate_get_list_entry(enumeration.get())) {
        const std::string_view path = udev_list_entry_get_name(entry);
        names.emplace_back(path.substr(path.rfind('/') + 1));
    }
    return names;
}

// Reads the file uevent, which contains all properties as of one moment. libudev would make about fifty system calls
// for the same, which would delay the flag.
UdevHIDNode UdevHIDNodes::read(const std::string& name) {
    const auto content = readSysfsFile(devicesFolder + name + "/uevent");
    if (const int* error = std::get_if<int>(&content)) {
        return {.state = isPassing(*error) ? UdevHIDNode::State::unreadable : UdevHIDNode::State::missing};
    }
    return parse(name, std::get<std::string>(content));
}

UdevHIDNode UdevHIDNodes::parse(const std::string& name, std::string_view uevent) {
    const auto driver = property(uevent, "DRIVER");
    return {driver ? UdevHIDNode::State::bound : UdevHIDNode::State::unbound,
            UdevHIDDevice(name, property(uevent, "HID_ID"), property(uevent, "HID_NAME")),
            std::string(driver.value_or("")), std::string(property(uevent, "HID_PHYS").value_or("")),
            std::string(property(uevent, "HID_UNIQ").value_or(""))};
}

}  // namespace kovra
