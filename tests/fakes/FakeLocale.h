#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "BLE_kovra/platform/Locale.h"

namespace kovra {

// The locale of a user who prefers `languages`. It sorts names by their bytes, but ignores the case of A to Z.
class FakeLocale : public Locale {
  public:
    explicit FakeLocale(std::vector<std::string> preferred = {"en-GB"}) : languages(std::move(preferred)) {}

    std::vector<std::string> preferredLanguages() const override { return languages; }
    std::string sortKey(std::string_view name) const override {
        ++sortKeysMade;
        std::string key(name);
        for (char& c : key) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
        return key;
    }
    bool isAscending(const std::string& firstKey, const std::string& secondKey) const override {
        return firstKey < secondKey;
    }

    std::vector<std::string> languages;
    mutable int sortKeysMade = 0;
};

}  // namespace kovra
