#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "tests/platform/macos/fakes/FakeObject.h"

struct __CFString : kovra::FakeObject {
    explicit __CFString(std::u16string text, Life life = Life::counted)
        : FakeObject(kovra::FakeType::text, life), units(std::move(text)) {}
    const std::u16string units;
};

struct __CFNumber : kovra::FakeObject {
    explicit __CFNumber(std::variant<std::int64_t, double> number)
        : FakeObject(kovra::FakeType::number), value(number) {}
    const std::variant<std::int64_t, double> value;
};

namespace kovra {

// Values that a test creates; the caller owns the reference.
CFStringRef newText(const std::string& utf8);
CFNumberRef newInteger(std::int64_t value);
// Converts a text to UTF-8, up to the first unpaired surrogate.
std::string textOf(CFStringRef text);

struct FakeSettings {
    static std::vector<std::string> languages;
};

}  // namespace kovra
