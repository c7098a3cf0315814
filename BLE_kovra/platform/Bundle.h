#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace kovra {

// A value of the bundle's information dictionary, with its type.
using InfoValue = std::variant<std::string, double, bool>;

// The metadata of the installed program.
class Bundle {
  public:
    virtual ~Bundle() = default;
    // Returns the value of this key. Returns nullopt if there is no dictionary, no such key, or a value of another type
    // than those of InfoValue.
    virtual std::optional<InfoValue> infoDictionaryValue(std::string_view key) const = 0;
};

}  // namespace kovra
