#pragma once

#include <cstdint>
#include <string>

namespace kovra {

class HIDDevice;
class L10n;

// Returns the number that identifies an attached interface: its registry entry ID, or its handle if it has no such ID.
// The number is the same when the interface is attached and when it is removed.
std::uint64_t interfaceID(const HIDDevice& device);

// Returns the product name that the device reports, or a text in the user's language if it reports none.
std::string displayName(const HIDDevice& device, const L10n& texts);

// Returns the identity key of a device: NAME#VENDOR:PRODUCT, with its displayName() and both numbers in decimal. A
// missing number is written as 0.
//
// All interfaces of a device have the same key. Two devices of one model also have the same key and therefore count as
// one device. For a device without a product name, the key depends on the user's language.
std::string userKey(const HIDDevice& device, const L10n& texts);

}  // namespace kovra
