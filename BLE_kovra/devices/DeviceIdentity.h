#pragma once

#include <cstdint>
#include <string>

namespace kovra {

class HIDDevice;
class L10n;

// Identifies an attached interface by its registry entry ID, or by its handle if it has none. The number is the same at
// attachment and removal.
std::uint64_t interfaceID(const HIDDevice& device);

// The product name that the device reports, or the localized text for an unknown device.
std::string displayName(const HIDDevice& device, const L10n& texts);

// The identity key of a device: name#vendor:product in decimal. A missing number is 0.
//
// All interfaces of a device share the key. Two devices of one model share it too and count as one device. The key of a
// nameless device depends on the user's language.
std::string userKey(const HIDDevice& device, const L10n& texts);

}  // namespace kovra
