#pragma once

#include <string>
#include <string_view>

#include "BLE_kovra/control/Facts.h"

namespace kovra::control {

// Returns what `ble-kovractl status --json` prints: one object in one line. What is not known is null. The manual page
// lists the members.
std::string statusJson(const Facts& facts);

// Returns the text as a JSON string with its quotation marks. Characters that control a terminal are escaped, too. The
// text must be valid UTF-8.
std::string jsonString(std::string_view text);

}  // namespace kovra::control
