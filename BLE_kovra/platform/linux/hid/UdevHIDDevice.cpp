#include "BLE_kovra/platform/linux/hid/UdevHIDDevice.h"

#include <algorithm>
#include <charconv>
#include <functional>
#include <system_error>
#include <utility>

#include "BLE_kovra/platform/Utf8.h"

namespace kovra {

namespace {

constexpr std::uint64_t handleMark = std::uint64_t{1} << 63;

// Parses the whole text as a hexadecimal number of at most 32 bits.
std::optional<std::uint32_t> hexadecimal(std::string_view text) {
    std::uint32_t number = 0;
    const char* end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, number, 16);
    if (error != std::errc() || stopped != end) return std::nullopt;
    return number;
}

std::optional<std::uint64_t> instanceNumber(std::string_view nodeName) {
    const auto point = nodeName.rfind('.');
    if (point == std::string_view::npos) return std::nullopt;
    return hexadecimal(nodeName.substr(point + 1));
}

// Returns whether this is the kernel's name for a device without a name, "HID vvvv:pppp".
bool isPlaceholder(std::string_view name) {
    constexpr std::string_view pattern = "HID 0000:0000";
    return std::ranges::equal(name, pattern, [](char is, char expected) {
        if (expected != '0') return is == expected;
        return (is >= '0' && is <= '9') || (is >= 'a' && is <= 'f') || (is >= 'A' && is <= 'F');
    });
}

}  // namespace

UdevHIDDevice::UdevHIDDevice(std::string_view nodeName, std::optional<std::string_view> hidID,
                             std::optional<std::string_view> hidName)
    : handle_(std::hash<std::string_view>{}(nodeName) | handleMark), number_(instanceNumber(nodeName)) {
    const std::string_view id = hidID.value_or(std::string_view());
    const auto first = id.find(':');
    const auto second = id.find(':', first + 1);
    if (first != std::string_view::npos && second != std::string_view::npos) {
        const auto bus = hexadecimal(id.substr(0, first));
        const auto vendor = hexadecimal(id.substr(first + 1, second - first - 1));
        const auto product = hexadecimal(id.substr(second + 1));
        if (bus && vendor && product) {
            vendor_ = *vendor;
            product_ = *product;
        }
    }
    if (hidName && !hidName->empty() && !isPlaceholder(*hidName)) name_ = validUtf8(*hidName);
}

std::optional<std::int64_t> UdevHIDDevice::integerProperty(std::string_view name) const {
    if (name == "VendorID") return vendor_;
    if (name == "ProductID") return product_;
    return std::nullopt;
}

std::optional<std::string> UdevHIDDevice::stringProperty(std::string_view name) const {
    return name == "Product" ? name_ : std::nullopt;
}

bool UdevHIDDevice::operator==(const UdevHIDDevice& other) const {
    return handle_ == other.handle_ && number_ == other.number_ && vendor_ == other.vendor_ &&
           product_ == other.product_ && name_ == other.name_;
}

}  // namespace kovra
