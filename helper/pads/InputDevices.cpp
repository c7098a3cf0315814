#include "helper/pads/InputDevices.h"

#include <linux/input.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>

#include "helper/Handles.h"

namespace kovra::helper {

namespace {

std::string_view text(const char* value) { return value != nullptr ? value : ""; }

bool isSet(udev_device* device, const char* property) {
    return text(udev_device_get_property_value(device, property)) == "1";
}

std::uint16_t hexNumber(udev_device* device, const char* attribute) {
    const std::string_view digits = text(udev_device_get_sysattr_value(device, attribute));
    std::uint16_t number = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), number, 16);
    return number;
}

// Tests a bit of a mask in sysfs. The kernel prints a mask as hexadecimal words of the size of a long, the highest word
// first and without leading words that are zero.
bool hasBit(udev_device* device, const char* attribute, unsigned bit) {
    constexpr unsigned wordSize = 8 * sizeof(unsigned long);
    std::string_view words = text(udev_device_get_sysattr_value(device, attribute));
    for (unsigned skipped = bit / wordSize; skipped > 0; --skipped) {
        const std::size_t end = words.rfind(' ');
        if (end == std::string_view::npos) return false;
        words.remove_suffix(words.size() - end);
    }
    words.remove_prefix(words.rfind(' ') + 1);
    unsigned long word = 0;
    std::from_chars(words.data(), words.data() + words.size(), word, 16);
    return ((word >> bit % wordSize) & 1) != 0;
}

// Returns the kind of USB port that the device is in. A device behind a removable hub is removable, too.
UsbPort port(udev_device* device) {
    bool isFixed = false;
    while ((device = udev_device_get_parent_with_subsystem_devtype(device, "usb", "usb_device")) != nullptr) {
        const std::string_view removable = text(udev_device_get_sysattr_value(device, "removable"));
        if (removable == "removable") return UsbPort::removable;
        if (removable == "fixed") isFixed = true;
    }
    return isFixed ? UsbPort::fixed : UsbPort::unknown;
}

// Whether libudev's error means that there is no such device, or none any more.
bool meansGone(int error) { return error == 0 || error == ENODEV || error == ENOENT || error == ENXIO; }

InputProperties properties(udev_device* node, udev_device* input, int& error) {
    InputProperties device{.input = std::string(text(udev_device_get_sysname(input))),
                           .name = std::string(text(udev_device_get_sysattr_value(input, "name"))),
                           .isTouchpad = isSet(node, "ID_INPUT_TOUCHPAD"),
                           .isMouse = isSet(node, "ID_INPUT_MOUSE"),
                           .isPointingStick = isSet(node, "ID_INPUT_POINTINGSTICK"),
                           .hasStickProperty = hasBit(input, "properties", INPUT_PROP_POINTING_STICK),
                           .hasMiddleButton = hasBit(input, "capabilities/key", BTN_MIDDLE),
                           .bus = hexNumber(input, "id/bustype"),
                           .vendor = hexNumber(input, "id/vendor"),
                           .port = port(input)};
    errno = 0;
    device.isVirtual = udev_device_get_parent(input) == nullptr;
    if (device.isVirtual && !meansGone(errno)) error = errno;
    if (const char* integration = udev_device_get_property_value(node, "ID_INPUT_TOUCHPAD_INTEGRATION"))
        device.integration = integration;
    if (const char* seat = udev_device_get_property_value(node, "ID_SEAT")) device.seat = seat;
    if (udev_device* hid = udev_device_get_parent_with_subsystem_devtype(input, "hid", nullptr))
        device.hid = text(udev_device_get_syspath(hid));
    return device;
}

}  // namespace

std::vector<InputProperties> inputDevices(udev* context, int& error) {
    std::vector<InputProperties> devices;
    const Handle<udev_enumerate, udev_enumerate_unref> list(udev_enumerate_new(context));
    error = list ? 0 : ENOMEM;
    if (!list) return devices;
    udev_enumerate_add_match_subsystem(list.get(), "input");
    udev_enumerate_add_match_sysname(list.get(), "event*");
    udev_enumerate_add_match_property(list.get(), "ID_INPUT_TOUCHPAD", "1");
    udev_enumerate_add_match_property(list.get(), "ID_INPUT_MOUSE", "1");
    error = -std::min(udev_enumerate_scan_devices(list.get()), 0);
    udev_list_entry* entry = nullptr;
    udev_list_entry_foreach(entry, udev_enumerate_get_list_entry(list.get())) {
        errno = 0;
        const Handle<udev_device, udev_device_unref> node(
            udev_device_new_from_syspath(context, udev_list_entry_get_name(entry)));
        udev_device* input =
            node ? udev_device_get_parent_with_subsystem_devtype(node.get(), "input", nullptr) : nullptr;
        if (input != nullptr)
            devices.push_back(properties(node.get(), input, error));
        else if (!meansGone(errno))
            error = errno;
    }
    return devices;
}

}  // namespace kovra::helper
