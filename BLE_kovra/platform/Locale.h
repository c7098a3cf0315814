#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kovra {

// The user's languages and collation order.
class Locale {
  public:
    virtual ~Locale() = default;

    // Language tags such as ru-RU, in order of preference; empty if none is set.
    virtual std::vector<std::string> preferredLanguages() const = 0;

    // The collation key of a name. It is costly to make and cheap to compare.
    virtual std::string sortKey(std::string_view name) const = 0;
    // Compares two names by their collation keys. Returns whether the first sorts before the second in the user's
    // order, ignoring case.
    virtual bool isAscending(const std::string& firstKey, const std::string& secondKey) const = 0;
};

}  // namespace kovra
