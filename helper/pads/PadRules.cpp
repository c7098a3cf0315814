#include "helper/pads/PadRules.h"

#include <linux/input.h>

#include <set>
#include <string_view>

namespace kovra::helper {

namespace {

constexpr std::uint16_t logitech = 0x046d;
constexpr std::uint16_t wacom = 0x056a;

// The kernel's drivers name the input devices of one HID device after their kind: "... Touchpad", "... Mouse".
bool isNamedMouse(std::string_view name) { return name.ends_with(" Mouse"); }

// In case of doubt, a device counts as a stick: an unmuted twin does less harm than a muted stick.
bool isPointingStick(const InputProperties& device) {
    if (device.hasStickProperty) return true;
    return device.isPointingStick && (device.bus != BUS_I2C || device.hasMiddleButton);
}

bool isTwin(const InputProperties& device, const std::set<std::string>& hidDevicesOfPads) {
    return device.isMouse && !device.isTouchpad && !isPointingStick(device) && isNamedMouse(device.name) &&
           hidDevicesOfPads.contains(device.hid);
}

}  // namespace

bool isBuiltInPad(const InputProperties& device) {
    if (!device.isTouchpad || device.isVirtual || device.seat != "seat0") return false;
    // Checks the bus, because a Bluetooth device is below the USB port of its adapter.
    if (device.bus == BUS_USB && device.port != UsbPort::unknown) return device.port == UsbPort::fixed;
    if (device.integration == "internal") return true;
    if (device.integration == "external") return false;
    return device.bus != BUS_BLUETOOTH && device.vendor != logitech && device.vendor != wacom;
}

std::vector<std::string> inputsToMute(const std::vector<InputProperties>& devices) {
    std::set<std::string> inputs;
    std::set<std::string> hidDevicesOfPads;
    for (const InputProperties& device : devices) {
        if (!isBuiltInPad(device)) continue;
        inputs.insert(device.input);
        if (!device.hid.empty()) hidDevicesOfPads.insert(device.hid);
    }
    for (const InputProperties& device : devices) {
        if (isTwin(device, hidDevicesOfPads)) inputs.insert(device.input);
    }
    return {inputs.begin(), inputs.end()};
}

}  // namespace kovra::helper
