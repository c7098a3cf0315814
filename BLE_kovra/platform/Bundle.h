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
    // Null if there is no dictionary or no such key.
    virtual std::optional<InfoValue> infoDictionaryValue(std::string_view key) const = 0;
};

}  // namespace kovra
