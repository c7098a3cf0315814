#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "BLE_kovra/platform/linux/wire/Messages.h"

namespace kovra {

// Encodes a message as one line of JSON with a line feed. U+FFFD replaces the bytes that are not valid UTF-8.
std::string encode(const ToWindow& message);
std::string encode(const ToResident& message);

// Both functions return nullopt for a line that is not a valid message. Unknown members are ignored, because after an
// update of the package the two programs may have different versions.
std::optional<ToWindow> decodeToWindow(std::string_view line);
std::optional<ToResident> decodeToResident(std::string_view line);

}  // namespace kovra
