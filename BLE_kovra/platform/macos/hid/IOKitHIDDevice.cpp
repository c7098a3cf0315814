#include "BLE_kovra/platform/macos/hid/IOKitHIDDevice.h"

#include <IOKit/IOKitLib.h>

#include "BLE_kovra/platform/macos/foundation/CFText.h"

namespace kovra {

namespace {

// Returns a value that the device owns, or null if the device has no property of this type.
template <typename Ref>
Ref property(IOHIDDeviceRef device, std::string_view name, CFTypeID type) {
    const CFTypeRef value = IOHIDDeviceGetProperty(device, cfText(name).get());
    return value != nullptr && CFGetTypeID(value) == type ? static_cast<Ref>(value) : nullptr;
}

}  // namespace

std::optional<std::uint64_t> IOKitHIDDevice::registryEntryID() const {
    const io_service_t service = IOHIDDeviceGetService(device_.get());
    std::uint64_t number = 0;
    if (service == MACH_PORT_NULL || IORegistryEntryGetRegistryEntryID(service, &number) != KERN_SUCCESS) return {};
    return number;
}

std::uint64_t IOKitHIDDevice::handle() const { return reinterpret_cast<std::uintptr_t>(device_.get()); }

std::optional<std::int64_t> IOKitHIDDevice::integerProperty(std::string_view name) const {
    const auto* number = property<CFNumberRef>(device_.get(), name, CFNumberGetTypeID());
    std::int64_t value = 0;
    if (number == nullptr || CFNumberGetValue(number, kCFNumberSInt64Type, &value) == 0) return {};
    return value;
}

std::optional<std::string> IOKitHIDDevice::stringProperty(std::string_view name) const {
    const auto* text = property<CFStringRef>(device_.get(), name, CFStringGetTypeID());
    if (text == nullptr) return {};
    return utf8(text);
}

}  // namespace kovra
