#include "BLE_kovra/platform/macos/foundation/CFText.h"

#include "BLE_kovra/platform/Utf8.h"

namespace kovra {

CFHandle<CFStringRef> cfText(std::string_view text) {
    const std::string valid = validUtf8(text);
    return CFHandle(CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(valid.data()),
                                            static_cast<CFIndex>(valid.size()), kCFStringEncodingUTF8, false));
}

std::string utf8(CFStringRef text) {
    constexpr UInt8 noUtf8 = 0xFF;  // marks what cannot be converted; validUtf8() replaces it below
    const CFRange all{0, CFStringGetLength(text)};
    CFIndex size = 0;
    CFStringGetBytes(text, all, kCFStringEncodingUTF8, noUtf8, false, nullptr, 0, &size);
    std::string bytes(static_cast<std::size_t>(size), '\0');
    CFStringGetBytes(text, all, kCFStringEncodingUTF8, noUtf8, false, reinterpret_cast<UInt8*>(bytes.data()), size,
                     nullptr);
    return validUtf8(bytes);
}

}  // namespace kovra
