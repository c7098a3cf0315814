#pragma once

#include <string>
#include <string_view>

#include "BLE_kovra/platform/macos/foundation/CFHandle.h"

namespace kovra {

// With U+FFFD for each piece that is not valid UTF-8, which no CFString can hold.
CFHandle<CFStringRef> cfText(std::string_view text);
// As valid UTF-8, with U+FFFD for half a surrogate pair.
std::string utf8(CFStringRef text);

}  // namespace kovra
