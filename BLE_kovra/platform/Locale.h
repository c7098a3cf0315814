#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kovra {

// The user's language and order of names.
class Locale {
  public:
    virtual ~Locale() = default;

    // Language tags such as ru-RU, the user's first choice first; empty where none is set.
    virtual std::vector<std::string> preferredLanguages() const = 0;

    // What stands for a name when names are ordered: made once a name, compared often.
    virtual std::string sortKey(std::string_view name) const = 0;
    // Whether the first name comes before the second in the user's order, whatever the case of their letters.
    virtual bool isAscending(const std::string& firstKey, const std::string& secondKey) const = 0;
};

}  // namespace kovra
