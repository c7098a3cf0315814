#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace kovra {

struct PreferenceValue;
using PreferenceArray = std::vector<PreferenceValue>;
// A stored value of a type that the other alternatives of PreferenceValue do not cover.
struct OtherPreference {
    bool operator==(const OtherPreference&) const = default;
};

// A stored value with its type.
struct PreferenceValue : std::variant<bool, double, std::string, PreferenceArray, OtherPreference> {
    using variant::variant;
};

// The per-user key-value store. Writing reports no errors. A value that could not be written is written together with
// the next one.
class PreferencesStore {
  public:
    virtual ~PreferencesStore() = default;

    // Returns the stored value, or nullopt if nothing is stored under the key.
    virtual std::optional<PreferenceValue> object(std::string_view key) const = 0;
    // Returns the stored value as a boolean. A number is true unless it is 0. A text is true if it begins with Y, y, T,
    // t or a digit 1 to 9. White space, a sign and zeros may precede that character. Anything else is false.
    bool boolean(std::string_view key) const;
    // Stores the value under this key and leaves the other keys unchanged. In a text that is not valid UTF-8, U+FFFD
    // may replace the invalid bytes.
    virtual void set(std::string_view key, const PreferenceValue& value) = 0;
};

}  // namespace kovra
