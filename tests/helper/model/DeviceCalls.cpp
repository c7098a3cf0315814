// The calls of the helper to libudev, answered by the machine's input devices.

#include <libudev.h>

#include <cerrno>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tests/helper/model/Machine.h"

namespace kovra::helper::model {

namespace {

// A device of libudev: the event node of an input device, the input device itself, its HID device or its parent.
struct UdevDevice {
    Device device;
    std::string name;
    std::string path;
    std::unique_ptr<UdevDevice> input{};
    std::unique_ptr<UdevDevice> parent{};
};

struct Enumeration {
    std::vector<std::string> paths;
};

std::string pathOf(const Device& device) {
    return "/sys/devices/host/" + device.input + "/event" + device.input.substr(5);
}

std::unique_ptr<UdevDevice> nodeOf(const Device& device) {
    const std::string number = device.input.substr(5);
    auto node = std::make_unique<UdevDevice>(UdevDevice{device, "event" + number, pathOf(device)});
    node->input = std::make_unique<UdevDevice>(UdevDevice{device, device.input, "/sys/devices/host/" + device.input});
    if (!device.isVirtual)
        node->input->parent =
            std::make_unique<UdevDevice>(UdevDevice{device, device.hid, "/sys/devices/" + device.hid});
    return node;
}

UdevDevice* ours(udev_device* device) { return reinterpret_cast<UdevDevice*>(device); }
udev_device* theirs(UdevDevice* device) { return reinterpret_cast<udev_device*>(device); }

// The string that lasts as long as the device.
const char* found(const std::string& text) { return text.empty() ? nullptr : text.c_str(); }

}  // namespace

extern "C" {

udev* __wrap_udev_new();
udev* __wrap_udev_new() { return reinterpret_cast<udev*>(Machine::current); }

udev* __wrap_udev_unref(udev* context);
udev* __wrap_udev_unref(udev* context) {
    static_cast<void>(context);
    return nullptr;
}

udev_monitor* __wrap_udev_monitor_new_from_netlink(udev* context, const char* name);
udev_monitor* __wrap_udev_monitor_new_from_netlink(udev* context, const char* name) {
    const Entry entry;
    static_cast<void>(context);
    static_cast<void>(name);
    errno = EMFILE;
    if (entry->hasNoDescriptors) return nullptr;
    return reinterpret_cast<udev_monitor*>(
        new int(entry->newDescriptor({.kind = OpenFile::Kind::udev, .path = "udev", .members = {}})));
}

udev_monitor* __wrap_udev_monitor_unref(udev_monitor* monitor);
udev_monitor* __wrap_udev_monitor_unref(udev_monitor* monitor) {
    const Entry entry;
    const std::unique_ptr<int> descriptor(reinterpret_cast<int*>(monitor));
    entry->files.erase(*descriptor);
    ::close(*descriptor);
    return nullptr;
}

int __wrap_udev_monitor_filter_add_match_subsystem_devtype(udev_monitor* monitor, const char* name, const char* type);
int __wrap_udev_monitor_filter_add_match_subsystem_devtype(udev_monitor* monitor, const char* name, const char* type) {
    static_cast<void>(monitor);
    static_cast<void>(name);
    static_cast<void>(type);
    return 0;
}

int __wrap_udev_monitor_enable_receiving(udev_monitor* monitor);
int __wrap_udev_monitor_enable_receiving(udev_monitor* monitor) {
    const Entry entry;
    static_cast<void>(monitor);
    entry->hasDeviceEvent = false;  // earlier events are not received
    return 0;
}

int __wrap_udev_monitor_get_fd(udev_monitor* monitor);
int __wrap_udev_monitor_get_fd(udev_monitor* monitor) { return *reinterpret_cast<int*>(monitor); }

// The contents of an event do not matter to the helper, beyond that it is one of an event node.
udev_device* __wrap_udev_monitor_receive_device(udev_monitor* monitor);
udev_device* __wrap_udev_monitor_receive_device(udev_monitor* monitor) {
    const Entry entry;
    static_cast<void>(monitor);
    errno = EAGAIN;
    if (!entry->hasDeviceEvent) return nullptr;
    entry->hasDeviceEvent = false;
    return theirs(new UdevDevice{{}, "event1", "/sys/devices/host/input1/event1"});
}

udev_enumerate* __wrap_udev_enumerate_new(udev* context);
udev_enumerate* __wrap_udev_enumerate_new(udev* context) {
    static_cast<void>(context);
    return reinterpret_cast<udev_enumerate*>(new Enumeration);
}

udev_enumerate* __wrap_udev_enumerate_unref(udev_enumerate* list);
udev_enumerate* __wrap_udev_enumerate_unref(udev_enumerate* list) {
    delete reinterpret_cast<Enumeration*>(list);
    return nullptr;
}

int __wrap_udev_enumerate_add_match_subsystem(udev_enumerate* list, const char* name);
int __wrap_udev_enumerate_add_match_subsystem(udev_enumerate* list, const char* name) {
    static_cast<void>(list);
    static_cast<void>(name);
    return 0;
}
int __wrap_udev_enumerate_add_match_sysname(udev_enumerate* list, const char* name);
int __wrap_udev_enumerate_add_match_sysname(udev_enumerate* list, const char* name) {
    static_cast<void>(list);
    static_cast<void>(name);
    return 0;
}
int __wrap_udev_enumerate_add_match_property(udev_enumerate* list, const char* name, const char* value);
int __wrap_udev_enumerate_add_match_property(udev_enumerate* list, const char* name, const char* value) {
    static_cast<void>(list);
    static_cast<void>(name);
    static_cast<void>(value);
    return 0;
}

int __wrap_udev_enumerate_scan_devices(udev_enumerate* list);
int __wrap_udev_enumerate_scan_devices(udev_enumerate* list) {
    const Entry entry;
    if (entry->hasNoDescriptors) return -EMFILE;
    for (const auto& [name, device] : entry->devices)
        reinterpret_cast<Enumeration*>(list)->paths.push_back(pathOf(device));
    return 0;
}

// An entry of the list is an element of the vector of paths. The last one is empty.
udev_list_entry* __wrap_udev_enumerate_get_list_entry(udev_enumerate* list);
udev_list_entry* __wrap_udev_enumerate_get_list_entry(udev_enumerate* list) {
    auto& paths = reinterpret_cast<Enumeration*>(list)->paths;
    if (paths.empty()) return nullptr;
    paths.emplace_back();
    return reinterpret_cast<udev_list_entry*>(paths.data());
}

udev_list_entry* __wrap_udev_list_entry_get_next(udev_list_entry* entry);
udev_list_entry* __wrap_udev_list_entry_get_next(udev_list_entry* entry) {
    auto* next = reinterpret_cast<std::string*>(entry) + 1;
    return next->empty() ? nullptr : reinterpret_cast<udev_list_entry*>(next);
}

const char* __wrap_udev_list_entry_get_name(udev_list_entry* entry);
const char* __wrap_udev_list_entry_get_name(udev_list_entry* entry) {
    return reinterpret_cast<std::string*>(entry)->c_str();
}

udev_device* __wrap_udev_device_new_from_syspath(udev* context, const char* path);
udev_device* __wrap_udev_device_new_from_syspath(udev* context, const char* path) {
    const Entry entry;
    static_cast<void>(context);
    for (const auto& [name, device] : entry->devices) {
        if (pathOf(device) == path) return theirs(nodeOf(device).release());
    }
    errno = ENODEV;
    return nullptr;
}

udev_device* __wrap_udev_device_unref(udev_device* device);
udev_device* __wrap_udev_device_unref(udev_device* device) {
    delete ours(device);
    return nullptr;
}

const char* __wrap_udev_device_get_sysname(udev_device* device);
const char* __wrap_udev_device_get_sysname(udev_device* device) { return ours(device)->name.c_str(); }

const char* __wrap_udev_device_get_syspath(udev_device* device);
const char* __wrap_udev_device_get_syspath(udev_device* device) { return ours(device)->path.c_str(); }

udev_device* __wrap_udev_device_get_parent(udev_device* device);
udev_device* __wrap_udev_device_get_parent(udev_device* device) {
    errno = ENOENT;
    return theirs(ours(device)->parent.get());
}

udev_device* __wrap_udev_device_get_parent_with_subsystem_devtype(udev_device* device, const char* name,
                                                                  const char* type);
udev_device* __wrap_udev_device_get_parent_with_subsystem_devtype(udev_device* device, const char* name,
                                                                  const char* type) {
    static_cast<void>(type);
    const std::string_view subsystem = name;
    if (subsystem == "input") return theirs(ours(device)->input.get());
    return subsystem == "hid" && !ours(device)->device.hid.empty() ? theirs(ours(device)->parent.get()) : nullptr;
}

const char* __wrap_udev_device_get_property_value(udev_device* device, const char* name);
const char* __wrap_udev_device_get_property_value(udev_device* device, const char* name) {
    const auto& properties = ours(device)->device.properties;
    const auto value = properties.find(name);
    return value == properties.end() ? nullptr : found(value->second);
}

const char* __wrap_udev_device_get_sysattr_value(udev_device* device, const char* name);
const char* __wrap_udev_device_get_sysattr_value(udev_device* device, const char* name) {
    const Device& attributes = ours(device)->device;
    const std::string_view attribute = name;
    if (attribute == "name") return found(attributes.name);
    if (attribute == "properties") return found(attributes.stick);
    if (attribute == "capabilities/key") return found(attributes.keys);
    if (attribute == "id/bustype") return found(attributes.bus);
    return attribute == "id/vendor" ? found(attributes.vendor) : nullptr;
}

}  // extern "C"

}  // namespace kovra::helper::model
