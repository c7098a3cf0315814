#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace kovra {

// A value of the information dictionary, with its type.
using InfoValue = std::variant<std::string, double, bool>;

// What the installed program says of itself.
class Bundle {
  public:
    virtual ~Bundle() = default;
    // Null if there is no dictionary, or nothing under this key in it.
    virtual std::optional<InfoValue> infoDictionaryValue(std::string_view key) const = 0;
};

}  // namespace kovra
