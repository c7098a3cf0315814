#pragma once

#include <string>
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

// The system's own texts of the tests; the reference is the caller's.
CFStringRef newText(const std::string& utf8);
CFNumberRef newInteger(std::int64_t value);
// A text as UTF-8; a lone surrogate ends it.
std::string textOf(CFStringRef text);

// What the user has set in the system's settings.
struct FakeSettings {
    static std::vector<std::string> languages;
};

}  // namespace kovra
