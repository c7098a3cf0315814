#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kovra {

// One decoded character. `length` is its number of bytes, at least 1.
struct Utf8Character {
    char32_t codePoint;
    std::size_t length;
    bool valid;  // false: no character begins here, codePoint is U+FFFD
};

// Decodes the first character of a non-empty text. Overlong forms, surrogates, code points past U+10FFFF and truncated
// sequences are invalid. An invalid sequence ends before the first byte that cannot continue a valid character, but has
// at least one byte. One U+FFFD replaces the whole sequence.
constexpr Utf8Character decodeUtf8(std::string_view text) {
    constexpr char32_t replacement = 0xFFFD;
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned lead = byte(0);
    if (lead < 0x80) return {lead, 1, true};
    if (lead < 0xC2 || lead > 0xF4) return {replacement, 1, false};
    const std::size_t wanted = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    char32_t codePoint = lead & (0xFFU >> (wanted + 1));
    for (std::size_t i = 1; i < wanted; ++i) {
        unsigned lowest = 0x80, highest = 0xBF;
        if (i == 1) {
            if (lead == 0xE0) lowest = 0xA0;
            if (lead == 0xED) highest = 0x9F;
            if (lead == 0xF0) lowest = 0x90;
            if (lead == 0xF4) highest = 0x8F;
        }
        if (i >= text.size() || byte(i) < lowest || byte(i) > highest) return {replacement, i, false};
        codePoint = codePoint << 6 | (byte(i) & 0x3FU);
    }
    return {codePoint, wanted, true};
}

constexpr bool isUtf8(std::string_view text) {
    while (!text.empty()) {
        const Utf8Character character = decodeUtf8(text);
        if (!character.valid) return false;
        text.remove_prefix(character.length);
    }
    return true;
}

// Returns the text with each invalid sequence replaced by U+FFFD.
inline std::string validUtf8(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const Utf8Character character = decodeUtf8(text);
        result += character.valid ? text.substr(0, character.length) : std::string_view("\xEF\xBF\xBD");
        text.remove_prefix(character.length);
    }
    return result;
}

}  // namespace kovra
