#pragma once

#include <string>
#include <string_view>

#include "BLE_kovra/platform/macos/foundation/CFHandle.h"

namespace kovra {

// Returns the text with U+FFFD for each invalid sequence of UTF-8, since a CFString cannot hold such a sequence.
CFHandle<CFStringRef> cfText(std::string_view text);
// Returns valid UTF-8, with U+FFFD for an unpaired surrogate.
std::string utf8(CFStringRef text);

}  // namespace kovra
