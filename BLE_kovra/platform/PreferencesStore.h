#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace kovra {

struct PreferenceValue;
using PreferenceArray = std::vector<PreferenceValue>;
// Something stored that is no truth value, number, text or array.
struct OtherPreference {
    bool operator==(const OtherPreference&) const = default;
};

// One stored object, with the type that it was stored with.
struct PreferenceValue : std::variant<bool, double, std::string, PreferenceArray, OtherPreference> {
    using variant::variant;
};

// The user's own key-value store: read once at the start, written at each change. Writing reports nothing; what could
// not be written is kept and written with the next save.
class PreferencesStore {
  public:
    virtual ~PreferencesStore() = default;

    // Absent if nothing is stored under the key.
    virtual std::optional<PreferenceValue> object(std::string_view key) const = 0;
    // The boolean reading of whatever is stored: a truth value as it is, a number if it is not zero, a text that begins
    // (after blanks, a sign and zeroes) with Y, y, T, t or a digit 1 to 9; everything else, and nothing at all, is
    // false.
    bool boolean(std::string_view key) const;
    // Replaces what is stored under this key and touches nothing else. A text that is no UTF-8 may be kept with U+FFFD
    // in place of what is none.
    virtual void set(std::string_view key, const PreferenceValue& value) = 0;
};

}  // namespace kovra
