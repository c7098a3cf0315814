#include <fuzzer/FuzzedDataProvider.h>
#include <linux/input.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "helper/pads/PadRules.h"
#include "tests/fuzz/Promise.h"

// The properties of input devices, from udev and sysfs: which devices the helper mutes.

namespace {

using namespace kovra;
using helper::InputProperties;

InputProperties deviceFrom(FuzzedDataProvider& input, std::size_t number) {
    InputProperties device;
    device.input = "input" + std::to_string(input.ConsumeBool() ? number : 7);
    device.name =
        input.ConsumeBool() ? input.ConsumeRandomLengthString(20) + " Mouse" : input.ConsumeRandomLengthString();
    device.isTouchpad = input.ConsumeBool();
    device.isMouse = input.ConsumeBool();
    device.isPointingStick = input.ConsumeBool();
    device.hasStickProperty = input.ConsumeBool();
    device.hasMiddleButton = input.ConsumeBool();
    if (input.ConsumeBool()) {
        device.integration = input.PickValueInArray({"internal", "external", "", "Internal"});
    }
    device.bus = input.ConsumeBool()
                     ? input.PickValueInArray<std::uint16_t>({BUS_USB, BUS_I2C, BUS_BLUETOOTH, BUS_I8042})
                     : input.ConsumeIntegral<std::uint16_t>();
    device.vendor = input.PickValueInArray<std::uint16_t>({0, 0x046d, 0x056a, 0x06cb});
    device.port =
        input.PickValueInArray({helper::UsbPort::unknown, helper::UsbPort::fixed, helper::UsbPort::removable});
    device.isVirtual = input.ConsumeBool();
    device.seat = input.PickValueInArray({"seat0", "seat1", ""});
    device.hid = input.PickValueInArray({"", "/sys/devices/a", "/sys/devices/b"});
    return device;
}

// Whether somebody could mean to use this device beside the pad, so that it must never be muted.
bool isNeverMuted(const InputProperties& device) {
    const bool isStick =
        device.hasStickProperty || (device.isPointingStick && (device.bus != BUS_I2C || device.hasMiddleButton));
    const bool isForeignPad = device.isTouchpad && (device.isVirtual || device.seat != "seat0");
    return isForeignPad || (!device.isTouchpad && (isStick || !device.isMouse || device.hid.empty() ||
                                                   !std::string_view(device.name).ends_with(" Mouse")));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    std::vector<InputProperties> devices;
    while (input.remaining_bytes() > 0 && devices.size() < 8) devices.push_back(deviceFrom(input, devices.size()));

    const std::vector<std::string> muted = helper::inputsToMute(devices);
    fuzz::promise(std::ranges::adjacent_find(muted, std::ranges::greater_equal()) == muted.end(),
                  "the inputs are sorted and different");
    for (const std::string& each : muted) {
        fuzz::promise(std::ranges::any_of(
                          devices, [&](const auto& device) { return device.input == each && !isNeverMuted(device); }),
                      "only built-in pads and their twins are muted");
    }
    bool hasPad = false;
    for (const InputProperties& device : devices) {
        if (!helper::isBuiltInPad(device)) continue;
        hasPad = true;
        fuzz::promise(device.isTouchpad && !isNeverMuted(device), "a built-in pad is a pad of this seat");
        fuzz::promise(std::ranges::binary_search(muted, device.input), "each built-in pad is muted");
    }
    fuzz::promise(hasPad || muted.empty(), "without a built-in pad nothing is muted");
    std::ranges::reverse(devices);
    fuzz::promise(helper::inputsToMute(devices) == muted, "the order of the devices does not count");
    return 0;
}
