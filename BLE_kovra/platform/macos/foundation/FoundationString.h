#pragma once

#import <Foundation/Foundation.h>

#include <string>
#include <string_view>

#include "BLE_kovra/platform/Utf8.h"

namespace kovra {

// Returns the text with U+FFFD for invalid UTF-8. Otherwise Foundation would refuse the whole text.
inline NSString* foundationString(std::string_view text) {
    const std::string valid = validUtf8(text);
    return [[NSString alloc] initWithBytes:valid.data() length:valid.size() encoding:NSUTF8StringEncoding];
}

// Returns an empty text for null.
inline std::string utf8String(NSString* text) {
    const char* bytes = [text UTF8String];
    return bytes == nullptr ? std::string() : std::string(bytes);
}

}  // namespace kovra
