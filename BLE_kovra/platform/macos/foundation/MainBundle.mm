#include "BLE_kovra/platform/macos/foundation/MainBundle.h"

#import <CoreFoundation/CoreFoundation.h>
#import <Foundation/Foundation.h>

#include "BLE_kovra/platform/macos/foundation/FoundationString.h"

namespace kovra {

std::optional<InfoValue> MainBundle::infoDictionaryValue(std::string_view key) const {
    const id value = [[[NSBundle mainBundle] infoDictionary] objectForKey:foundationString(key)];
    if ([value isKindOfClass:[NSString class]]) return utf8String(value);
    if (![value isKindOfClass:[NSNumber class]]) return std::nullopt;
    NSNumber* number = value;
    if (CFGetTypeID((__bridge CFTypeRef)number) == CFBooleanGetTypeID()) return static_cast<bool>([number boolValue]);
    return [number doubleValue];
}

}  // namespace kovra
