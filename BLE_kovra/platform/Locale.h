#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kovra {

// Which system the program's texts describe. Most texts are the same on every system.
enum class Wording { macOS, linuxDesktop };

// The user's languages and collation order.
class Locale {
  public:
    virtual ~Locale() = default;

    // Returns language tags such as ru-RU, in order of preference. The list is empty if the user has set no language.
    virtual std::vector<std::string> preferredLanguages() const = 0;

    // Returns the collation key of a name. The key is costly to create and cheap to compare.
    virtual std::string sortKey(std::string_view name) const = 0;
    // Returns whether the name with the first collation key sorts before the other one in the user's order, ignoring
    // case.
    virtual bool isAscending(const std::string& firstKey, const std::string& secondKey) const = 0;
};

}  // namespace kovra
