#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kovra::helper {

// Whether a device can be unplugged from its USB port, if the kernel knows.
enum class UsbPort { unknown, fixed, removable };

// The properties of an input device that has an event node, from udev and sysfs.
struct InputProperties {
    std::string input = {};  // the kernel's name: "input17"
    std::string name = {};   // the driver's name: "SYNA8004:00 06CB:CD8B Touchpad"
    bool isTouchpad = false;
    bool isMouse = false;
    bool isPointingStick = false;                 // ID_INPUT_POINTINGSTICK; on I2C udev sets it for every mouse
    bool hasStickProperty = false;                // INPUT_PROP_POINTING_STICK; most drivers do not set it
    bool hasMiddleButton = false;                 // as a rule sticks have one, and twins have none
    std::optional<std::string> integration = {};  // ID_INPUT_TOUCHPAD_INTEGRATION
    std::uint16_t bus = 0;                        // as in <linux/input.h>
    std::uint16_t vendor = 0;
    UsbPort port = UsbPort::unknown;
    bool isVirtual = false;  // it has no parent device: a program has created it with uinput
    std::string seat = "seat0";
    std::string hid = {};  // the path of its HID device; empty if it has none
};

// Whether the device is a touchpad of seat0 that is built into the computer. A virtual device is not built in.
//
// On USB the port decides, if the kernel knows it. Otherwise udev's property ID_INPUT_TOUCHPAD_INTEGRATION decides,
// then the bus and the vendor. Without any information, a touchpad counts as built in.
bool isBuiltInPad(const InputProperties& device);

// The devices to mute, sorted and without duplicates: each built-in pad and its twin. The twin is a mouse that the same
// HID device presents in addition to the pad. A mouse that may be a pointing stick is never muted, even if it belongs
// to the same HID device.
std::vector<std::string> inputsToMute(const std::vector<InputProperties>& devices);

}  // namespace kovra::helper
