#pragma once

#include <cstdint>
#include <string>

namespace kovra {

class HIDDevice;
class L10n;

// Tells attached interfaces apart: the system registry's number, or the handle where there is none. The same at
// attachment and removal.
std::uint64_t interfaceID(const HIDDevice& device);

// The product name that the device reports, else the text for an unknown device.
std::string displayName(const HIDDevice& device, const L10n& texts);

// Tells models of device apart: name#vendor:product, numbers in decimal, 0 where the device reports none.
//
// All interfaces of a device share it, and so do two devices of one model: they count as one. A nameless device's key
// is in the user's language.
std::string userKey(const HIDDevice& device, const L10n& texts);

}  // namespace kovra
