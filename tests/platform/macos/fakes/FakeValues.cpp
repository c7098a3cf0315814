#include "tests/platform/macos/fakes/FakeValues.h"

#include <locale.h>
#include <wctype.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>
#include <utility>

using kovra::FakeObject;
using kovra::fakeObject;
using kovra::FakeType;
using kovra::refuse;

struct __CFBoolean : FakeObject {
    __CFBoolean() : FakeObject(FakeType::truth, Life::endless) {}
};

struct __CFArray : FakeObject {
    __CFArray() : FakeObject(FakeType::array) {}
    ~__CFArray() override {
        for (const CFTypeRef element : elements) CFRelease(element);
    }
    std::vector<CFTypeRef> elements;
};

struct __CFDictionary : FakeObject {
    __CFDictionary() : FakeObject(FakeType::dictionary) {}
};

struct __CFLocale : FakeObject {
    __CFLocale() : FakeObject(FakeType::locale) {}
};

struct CFDictionaryKeyCallBacks {};
struct CFDictionaryValueCallBacks {};

namespace {

// Decodes UTF-8 into UTF-16; returns false if the text is not valid UTF-8.
bool decode(const UInt8* bytes, CFIndex count, std::u16string& units) {
    for (CFIndex i = 0; i < count;) {
        const unsigned lead = bytes[i];
        const int more = lead < 0x80                   ? 0
                         : lead >= 0xC2 && lead < 0xE0 ? 1
                         : lead >= 0xE0 && lead < 0xF0 ? 2
                         : lead >= 0xF0 && lead < 0xF5 ? 3
                                                       : -1;
        if (more < 0 || i + more >= count) return false;
        char32_t c = more == 0 ? lead : lead & (0x3FU >> more);
        for (int k = 1; k <= more; ++k) {
            const unsigned next = bytes[i + k];
            if (next >> 6 != 2) return false;
            c = c << 6 | (next & 0x3F);
        }
        const bool isTooLong = (more == 2 && c < 0x800) || (more == 3 && c < 0x10000);
        if (isTooLong || (c >= 0xD800 && c < 0xE000) || c > 0x10FFFF) return false;
        if (c >= 0x10000) {
            units += static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
            units += static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
        } else {
            units += static_cast<char16_t>(c);
        }
        i += more + 1;
    }
    return true;
}

bool isHigh(char16_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool isLow(char16_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

// Returns the character at `i` and advances `i` past it. An unpaired surrogate is returned as it is.
char32_t next(const std::u16string& units, std::size_t& i) {
    const char16_t unit = units[i++];
    if (!isHigh(unit) || i == units.size() || !isLow(units[i])) return unit;
    return 0x10000 + (static_cast<char32_t>(unit - 0xD800) << 10) + (units[i++] - 0xDC00U);
}

// Encodes as UTF-8. An unpaired surrogate becomes the loss byte; without a loss byte the text ends there.
std::string encode(const std::u16string& units, UInt8 lossByte) {
    std::string bytes;
    const auto add = [&](char32_t byte) { bytes += static_cast<char>(static_cast<unsigned char>(byte)); };
    for (std::size_t i = 0; i < units.size();) {
        const char32_t c = next(units, i);
        if (c >= 0xD800 && c < 0xE000) {
            if (lossByte == 0) break;
            add(lossByte);
        } else if (c < 0x80) {
            add(c);
        } else if (c < 0x800) {
            add(0xC0 | c >> 6), add(0x80 | (c & 0x3F));
        } else if (c < 0x10000) {
            add(0xE0 | c >> 12), add(0x80 | (c >> 6 & 0x3F)), add(0x80 | (c & 0x3F));
        } else {
            add(0xF0 | c >> 18), add(0x80 | (c >> 12 & 0x3F)), add(0x80 | (c >> 6 & 0x3F)), add(0x80 | (c & 0x3F));
        }
    }
    return bytes;
}

bool isMark(char32_t c) { return c >= 0x300 && c < 0x370; }

// The sort key of a text: its letters, then the letters with their marks. Without a locale only the second part counts.
using Order = std::pair<std::u32string, std::u32string>;

Order orderOf(const std::u16string& units, CFStringCompareFlags flags, bool hasLocale) {
    static const locale_t characters = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    static const std::map<char32_t, std::u32string> parts{
        {U'ä', U"a\u0308"}, {U'Ä', U"A\u0308"}, {U'ё', U"е\u0308"}, {U'Ё', U"Е\u0308"}};
    std::u32string letters, all;
    for (std::size_t i = 0; i < units.size();) {
        std::u32string pieces(1, next(units, i));
        const auto found = parts.find(pieces.front());
        if (found != parts.end() && (flags & kCFCompareNonliteral) != 0) pieces = found->second;
        for (char32_t piece : pieces) {
            if ((flags & kCFCompareCaseInsensitive) != 0) {
                piece = static_cast<char32_t>(::towlower_l(static_cast<wint_t>(piece), characters));
            }
            all += piece;
            if (!isMark(piece)) letters += piece;
        }
    }
    return {hasLocale ? letters : std::u32string(), all};
}

}  // namespace

namespace kovra {

std::vector<std::string> FakeSettings::languages{"en-GB", "ru-RU"};

CFStringRef newText(const std::string& utf8) {
    return CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(utf8.data()),
                                   static_cast<CFIndex>(utf8.size()), kCFStringEncodingUTF8, false);
}

CFNumberRef newInteger(std::int64_t value) { return CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt64Type, &value); }

std::string textOf(CFStringRef text) { return encode(fakeObject<__CFString>(text, FakeType::text).units, 0); }

}  // namespace kovra

extern "C" {

static const __CFBoolean theTrue, theFalse;
const CFBooleanRef kCFBooleanTrue = &theTrue;
const CFBooleanRef kCFBooleanFalse = &theFalse;
const CFArrayCallBacks kCFTypeArrayCallBacks{};
const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks{};
const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks{};

CFTypeID CFStringGetTypeID() { return static_cast<CFTypeID>(FakeType::text); }
CFTypeID CFBooleanGetTypeID() { return static_cast<CFTypeID>(FakeType::truth); }
CFTypeID CFNumberGetTypeID() { return static_cast<CFTypeID>(FakeType::number); }
CFTypeID CFArrayGetTypeID() { return static_cast<CFTypeID>(FakeType::array); }

CFStringRef CFStringCreateWithBytes(CFAllocatorRef, const UInt8* bytes, CFIndex count, CFStringEncoding encoding,
                                    Boolean isExternal) {
    if (encoding != kCFStringEncodingUTF8 || isExternal != 0) refuse("an encoding that is not ours");
    std::u16string units;
    return decode(bytes, count, units) ? new __CFString(std::move(units)) : nullptr;
}

CFIndex CFStringGetLength(CFStringRef text) {
    return static_cast<CFIndex>(fakeObject<__CFString>(text, FakeType::text).units.size());
}

CFIndex CFStringGetBytes(CFStringRef text, CFRange range, CFStringEncoding encoding, UInt8 lossByte, Boolean isExternal,
                         UInt8* buffer, CFIndex room, CFIndex* used) {
    const auto& units = fakeObject<__CFString>(text, FakeType::text).units;
    if (encoding != kCFStringEncodingUTF8 || isExternal != 0) refuse("an encoding that is not ours");
    if (range.location < 0 || range.length < 0 ||
        static_cast<std::size_t>(range.location + range.length) > units.size())
        refuse("a range beyond the text");
    const std::string bytes = encode(
        units.substr(static_cast<std::size_t>(range.location), static_cast<std::size_t>(range.length)), lossByte);
    const auto size = static_cast<CFIndex>(bytes.size());
    if (buffer != nullptr) std::memcpy(buffer, bytes.data(), static_cast<std::size_t>(std::min(size, room)));
    if (used != nullptr) *used = buffer == nullptr ? size : std::min(size, room);
    return range.length;
}

CFComparisonResult CFStringCompareWithOptionsAndLocale(CFStringRef first, CFStringRef second, CFRange range,
                                                       CFStringCompareFlags flags, CFLocaleRef locale) {
    const auto& text = fakeObject<__CFString>(first, FakeType::text).units;
    if (range.location < 0 || range.length < 0 || static_cast<std::size_t>(range.location + range.length) > text.size())
        refuse("a range beyond the text");
    if (locale != nullptr) fakeObject<__CFLocale>(locale, FakeType::locale);
    const auto compared =
        orderOf(text.substr(static_cast<std::size_t>(range.location), static_cast<std::size_t>(range.length)), flags,
                locale != nullptr);
    const auto other = orderOf(fakeObject<__CFString>(second, FakeType::text).units, flags, locale != nullptr);
    return compared < other ? kCFCompareLessThan : compared == other ? kCFCompareEqualTo : kCFCompareGreaterThan;
}

Boolean CFBooleanGetValue(CFBooleanRef truth) { return &fakeObject<__CFBoolean>(truth, FakeType::truth) == &theTrue; }

CFNumberRef CFNumberCreate(CFAllocatorRef, CFNumberType type, const void* value) {
    if (type == kCFNumberSInt64Type) return new __CFNumber(*static_cast<const std::int64_t*>(value));
    if (type == kCFNumberDoubleType) return new __CFNumber(*static_cast<const double*>(value));
    refuse("a type of numbers that is not ours");
}

Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value) {
    const auto& stored = fakeObject<__CFNumber>(number, FakeType::number).value;
    const auto* integer = std::get_if<std::int64_t>(&stored);
    const double real = integer != nullptr ? static_cast<double>(*integer) : std::get<double>(stored);
    if (type == kCFNumberDoubleType) {
        *static_cast<double*>(value) = real;
        return integer == nullptr || static_cast<std::int64_t>(real) == *integer;
    }
    if (type != kCFNumberSInt64Type) refuse("a type of numbers that is not ours");
    const bool fits = integer != nullptr || (std::abs(real) < 9e18 && std::trunc(real) == real);
    *static_cast<std::int64_t*>(value) = integer != nullptr      ? *integer
                                         : std::abs(real) < 9e18 ? static_cast<std::int64_t>(real)
                                                                 : 0;
    return fits;
}

CFArrayRef CFArrayCreate(CFAllocatorRef, const void** values, CFIndex count, const CFArrayCallBacks* callbacks) {
    if (callbacks != &kCFTypeArrayCallBacks) refuse("an array that does not retain its elements");
    auto* array = new __CFArray;
    for (CFIndex i = 0; i < count; ++i) array->elements.push_back(CFRetain(values[i]));
    return array;
}

CFIndex CFArrayGetCount(CFArrayRef array) {
    return static_cast<CFIndex>(fakeObject<__CFArray>(array, FakeType::array).elements.size());
}

const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index) {
    const auto& elements = fakeObject<__CFArray>(array, FakeType::array).elements;
    if (index < 0 || static_cast<std::size_t>(index) >= elements.size()) refuse("an index beyond the array");
    return elements[static_cast<std::size_t>(index)];
}

CFDictionaryRef CFDictionaryCreate(CFAllocatorRef, const void**, const void**, CFIndex count,
                                   const CFDictionaryKeyCallBacks* ofKeys, const CFDictionaryValueCallBacks* ofValues) {
    if (count != 0 || ofKeys != &kCFTypeDictionaryKeyCallBacks || ofValues != &kCFTypeDictionaryValueCallBacks)
        refuse("a dictionary that is not ours");
    return new __CFDictionary;
}

CFArrayRef CFLocaleCopyPreferredLanguages() {
    std::vector<const void*> tags;
    for (const std::string& tag : kovra::FakeSettings::languages) tags.push_back(kovra::newText(tag));
    const CFArrayRef languages =
        CFArrayCreate(kCFAllocatorDefault, tags.data(), static_cast<CFIndex>(tags.size()), &kCFTypeArrayCallBacks);
    for (const void* tag : tags) CFRelease(tag);
    return languages;
}

CFLocaleRef CFLocaleCopyCurrent() { return new __CFLocale; }
}
