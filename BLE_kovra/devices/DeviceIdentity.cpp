#include "BLE_kovra/devices/DeviceIdentity.h"

#include <utility>

#include "BLE_kovra/l10n/L10n.h"
#include "BLE_kovra/platform/HIDManager.h"

namespace kovra {

std::uint64_t interfaceID(const HIDDevice& device) { return device.registryEntryID().value_or(device.handle()); }

std::string displayName(const HIDDevice& device, const L10n& texts) {
    if (auto product = device.stringProperty("Product")) return *std::move(product);
    return texts.s("device.unknown");
}

std::string userKey(const HIDDevice& device, const L10n& texts) {
    const auto number = [&](const char* property) {
        return std::to_string(device.integerProperty(property).value_or(0));
    };
    return displayName(device, texts) + "#" + number("VendorID") + ":" + number("ProductID");
}

}  // namespace kovra
