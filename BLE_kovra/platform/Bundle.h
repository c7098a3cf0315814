#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace kovra {

// A typed value of the information dictionary.
using InfoValue = std::variant<std::string, double, bool>;

// The metadata of the installed program.
class Bundle {
  public:
    virtual ~Bundle() = default;
    // Returns nullopt if there is no dictionary, no such key, or a value of another type than those of InfoValue.
    virtual std::optional<InfoValue> infoDictionaryValue(std::string_view key) const = 0;
};

}  // namespace kovra
