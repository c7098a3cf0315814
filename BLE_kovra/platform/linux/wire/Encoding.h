#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "BLE_kovra/platform/linux/wire/Messages.h"

namespace kovra {

// A message as one line of JSON with its line feed. Text that is no UTF-8 crosses with U+FFFD in place of what is
// wrong.
std::string encode(const ToWindow& message);
std::string encode(const ToResident& message);

// Total: null for whatever is no such message. After an update of the package the two programs may differ in age, so
// unknown members are passed over.
std::optional<ToWindow> decodeToWindow(std::string_view line);
std::optional<ToResident> decodeToResident(std::string_view line);

}  // namespace kovra
