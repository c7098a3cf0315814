#include "BLE_kovra/platform/macos/foundation/CFLocale.h"

#include "BLE_kovra/platform/macos/foundation/CFText.h"

namespace kovra {

std::vector<std::string> CFLocale::preferredLanguages() const {
    std::vector<std::string> tags;
    const CFHandle languages(CFLocaleCopyPreferredLanguages());
    if (!languages) return tags;
    for (CFIndex i = 0; i < CFArrayGetCount(languages.get()); ++i) {
        tags.push_back(utf8(static_cast<CFStringRef>(CFArrayGetValueAtIndex(languages.get(), i))));
    }
    return tags;
}

bool CFLocale::isAscending(const std::string& firstKey, const std::string& secondKey) const {
    const auto first = cfText(firstKey);
    const auto second = cfText(secondKey);
    const CFRange all{0, CFStringGetLength(first.get())};
    return CFStringCompareWithOptionsAndLocale(first.get(), second.get(), all,
                                               kCFCompareCaseInsensitive | kCFCompareNonliteral,
                                               locale_.get()) == kCFCompareLessThan;
}

}  // namespace kovra
