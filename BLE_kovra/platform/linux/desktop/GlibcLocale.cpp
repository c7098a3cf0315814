#include "BLE_kovra/platform/linux/desktop/GlibcLocale.h"

#include <langinfo.h>
#include <wctype.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <optional>
#include <utility>

#include "BLE_kovra/platform/Utf8.h"

namespace kovra {

namespace {

std::string_view variable(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::string_view() : std::string_view(value);
}

// Returns the value of the first variable that is set, or an empty text if none is set.
std::string_view firstSet(std::initializer_list<const char*> names) {
    for (const char* name : names) {
        if (const std::string_view value = variable(name); !value.empty()) return value;
    }
    return {};
}

// Turns ru_RU.UTF-8@modifier into ru-RU. Returns an empty tag for the C locale, which has no language.
std::string languageTag(std::string_view locale) {
    std::string tag(locale.substr(0, locale.find_first_of(".@")));
    if (tag == "C" || tag == "POSIX") return {};
    std::ranges::replace(tag, '_', '-');
    return tag;
}

bool isUtf8(locale_t locale) {
    return std::strcmp(::nl_langinfo_l(CODESET, locale), "UTF-8") == 0 &&
           std::strcmp(::nl_langinfo_l(_NL_COLLATE_CODESET, locale), "UTF-8") == 0;
}

// Returns the UTF-8 variant of the user's locale, or else C.UTF-8 or C. Names are UTF-8, even if the locale uses
// another character set.
locale_t userLocale() {
    constexpr int mask = LC_CTYPE_MASK | LC_COLLATE_MASK;
    const auto utf8 = [](const std::string& name) -> locale_t {
        const locale_t locale = ::newlocale(mask, name.c_str(), nullptr);
        if (locale == nullptr || isUtf8(locale)) return locale;
        ::freelocale(locale);
        return nullptr;
    };
    if (const locale_t own = utf8("")) return own;
    std::string name(firstSet({"LC_ALL", "LC_COLLATE", "LANG"}));
    const std::size_t codeset = name.find('.');
    const std::size_t modifier = name.find('@');
    const std::string suffix = modifier == std::string::npos ? std::string() : name.substr(modifier);
    name.resize(std::min({codeset, modifier, name.size()}));
    if (const locale_t sameLanguage = utf8(name + ".UTF-8" + suffix)) return sameLanguage;
    if (const locale_t plain = utf8("C.UTF-8")) return plain;
    return ::newlocale(mask, "C", nullptr);
}

void appendUtf8(std::string& text, char32_t codePoint) {
    const auto byte = [&](char32_t bits) { text += static_cast<char>(static_cast<unsigned char>(bits)); };
    if (codePoint < 0x80) {
        byte(codePoint);
        return;
    }
    if (codePoint < 0x800) {
        byte(0xC0 | codePoint >> 6);
    } else {
        if (codePoint < 0x10000) {
            byte(0xE0 | codePoint >> 12);
        } else {
            byte(0xF0 | codePoint >> 18);
            byte(0x80 | (codePoint >> 12 & 0x3F));
        }
        byte(0x80 | (codePoint >> 6 & 0x3F));
    }
    byte(0x80 | (codePoint & 0x3F));
}

// Converts to upper case first, so that both lower-case forms of the Greek sigma have the same result.
char32_t foldedCase(char32_t codePoint, locale_t locale) {
    return static_cast<char32_t>(::towlower_l(::towupper_l(static_cast<wint_t>(codePoint), locale), locale));
}

}  // namespace

GlibcLocale::GlibcLocale() : locale_(userLocale()) {}

std::vector<std::string> GlibcLocale::preferredLanguages() const {
    std::vector<std::string> languages;
    const std::string ofLocale = languageTag(firstSet({"LC_ALL", "LC_MESSAGES", "LANG"}));
    if (ofLocale.empty()) return languages;
    std::string_view list = variable("LANGUAGE");
    if (list.empty()) return {ofLocale};
    while (!list.empty()) {
        const std::string_view entry = list.substr(0, list.find(':'));
        list.remove_prefix(std::min(entry.size() + 1, list.size()));
        if (entry.empty()) continue;
        std::string tag = languageTag(entry);
        // The C locale ends the list, because it means the program's own language.
        if (tag.empty()) break;
        languages.push_back(std::move(tag));
    }
    return languages;
}

std::string GlibcLocale::sortKey(std::string_view name) const {
    std::string folded;
    folded.reserve(name.size());
    while (!name.empty()) {
        const Utf8Character character = decodeUtf8(name);
        name.remove_prefix(character.length);
        // The C library would treat a NUL character as the end of the text.
        appendUtf8(folded, foldedCase(character.codePoint == 0 ? 0xFFFD : character.codePoint, locale_.get()));
    }
    std::string key(::strxfrm_l(nullptr, folded.c_str(), 0, locale_.get()), '\0');
    ::strxfrm_l(key.data(), folded.c_str(), key.size() + 1, locale_.get());
    return key;
}

bool GlibcLocale::isAscending(const std::string& firstKey, const std::string& secondKey) const {
    return firstKey < secondKey;
}

}  // namespace kovra
