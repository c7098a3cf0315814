#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>

#include "BLE_kovra/devices/DeviceIdentity.h"
#include "BLE_kovra/l10n/L10n.h"
#include "BLE_kovra/platform/linux/hid/UdevHIDNodes.h"
#include "tests/fuzz/Promise.h"

// The file uevent of a HID node, part of which the device itself supplies. The first line of the input is the name of
// the node, the rest is the file.

namespace {

using namespace kovra;

constexpr std::int64_t numbers = std::int64_t{1} << 32;

// Fails for a text that is not valid UTF-8.
bool isOneLineOfUtf8(const std::string& text) {
    try {
        static_cast<void>(nlohmann::json(text).dump());
    } catch (const nlohmann::json::type_error&) {
        return false;
    }
    return text.find('\n') == std::string::npos;
}

bool isLineOf(std::string_view text, const std::string& line) {
    bool found = false;
    fuzz::forEachLine(text, [&](std::string_view each) { found |= each == line; });
    return found;
}

std::string numberOf(const UdevHIDDevice& device, std::string_view name) {
    const std::optional<std::int64_t> number = device.integerProperty(name);
    fuzz::promise(!number || (*number >= 0 && *number < numbers), "a number has 32 bits");
    return std::to_string(number.value_or(0));
}

void checkIdentity(const UdevHIDDevice& device) {
    static const L10n texts({"en"});
    const auto registered = device.registryEntryID();
    fuzz::promise(!registered || *registered < static_cast<std::uint64_t>(numbers), "an ID has 32 bits");
    fuzz::promise(device.handle() >> 63 == 1, "a handle is never an ID");
    const std::string name = displayName(device, texts);
    fuzz::promise(isOneLineOfUtf8(name) && !name.empty(), "a name is one line of valid UTF-8");
    const std::string key = name + '#' + numberOf(device, "VendorID") + ':' + numberOf(device, "ProductID");
    fuzz::promise(userKey(device, texts) == key, "a key is NAME#VENDOR:PRODUCT");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input = fuzz::textOf(data, size);
    const std::size_t end = input.find('\n');
    const std::string node(input.substr(0, end));
    const std::string uevent(end == std::string_view::npos ? "" : input.substr(end + 1));

    const UdevHIDNode found = UdevHIDNodes::parse(node, uevent);
    fuzz::promise(found.device.has_value(), "a node that was read has a device");
    checkIdentity(*found.device);
    const bool isBound = found.state == UdevHIDNode::State::bound;
    fuzz::promise(isBound ? isLineOf(uevent, "DRIVER=" + found.driver) : found.driver.empty(), "DRIVER is a line");
    fuzz::promise(found.phys.empty() || isLineOf(uevent, "HID_PHYS=" + found.phys), "HID_PHYS is a line");
    fuzz::promise(found.uniq.empty() || isLineOf(uevent, "HID_UNIQ=" + found.uniq), "HID_UNIQ is a line");

    // A name with line feeds can add lines only after those that the kernel has written before it.
    const std::string first = "DRIVER=first\nHID_ID=0003:0000046D:0000C52B\nHID_NAME=First\n";
    const UdevHIDNode safe = UdevHIDNodes::parse(node, first + uevent);
    fuzz::promise(safe.driver == "first" && safe.device->integerProperty("VendorID") == 0x046D &&
                      safe.device->integerProperty("ProductID") == 0xC52B &&
                      safe.device->stringProperty("Product") == "First",
                  "the first line of a property counts");
    fuzz::promise(*found.device == *UdevHIDNodes::parse(node, uevent).device, "equal files make equal devices");
    return 0;
}
