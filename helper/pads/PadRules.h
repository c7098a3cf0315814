#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kovra::helper {

// Where the kernel knows of a USB port whether what is in it can be pulled out.
enum class UsbPort { unknown, fixed, removable };

// What udev and sysfs tell of an input device that somebody can read events of.
struct InputProperties {
    std::string input = {};  // the name the kernel gave it: "input17"
    std::string name = {};   // the name its driver gave it: "SYNA8004:00 06CB:CD8B Touchpad"
    bool isTouchpad = false;
    bool isMouse = false;
    bool isPointingStick = false;                 // by udev, which on I2C says so of every mouse
    bool driverSaysStick = false;                 // by the driver, which need not know
    bool hasMiddleButton = false;                 // which a touchpad's twin has no use for
    std::optional<std::string> integration = {};  // ID_INPUT_TOUCHPAD_INTEGRATION
    std::uint16_t bus = 0;                        // as in <linux/input.h>
    std::uint16_t vendor = 0;
    UsbPort port = UsbPort::unknown;
    bool isMadeByProgram = false;  // it hangs on no device: some program's events, by uinput
    std::string seat = "seat0";
    std::string hid = {};  // the HID device that it is a part of; empty for others
};

// A touchpad that cannot be taken off the computer, and that is a device at all, of the seat that the computer comes
// with. On USB the port has the last word; then what udev's database says, then the bus and the maker; what nothing is
// known of is built in.
bool isBuiltInPad(const InputProperties& device);

// The names of the devices to mute: each built-in pad, and the mouse that the same HID device shows itself as besides.
// Never a pointing stick, which may be a part of the same HID device. In order, each once.
std::vector<std::string> inputsToMute(const std::vector<InputProperties>& devices);

}  // namespace kovra::helper
