#pragma once

#include <algorithm>
#include <cctype>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "BLE_kovra/platform/PreferencesStore.h"

namespace kovra {

// Preferences in memory, typed as they were stored. Every save is recorded.
class FakePreferences : public PreferencesStore {
  public:
    struct Save {
        std::string key;
        PreferenceValue value;
    };

    std::optional<PreferenceValue> object(std::string_view key) const override {
        const auto found = stored.find(key);
        return found == stored.end() ? std::nullopt : std::optional(found->second);
    }
    bool boolean(std::string_view key) const override {
        const auto value = object(key);
        if (!value) return false;
        if (const auto* truth = std::get_if<bool>(&*value)) return *truth;
        if (const auto* number = std::get_if<double>(&*value)) return *number != 0;
        if (const auto* text = std::get_if<std::string>(&*value)) return readAsBoolean(*text);
        return false;
    }
    void set(std::string_view key, const PreferenceValue& value) override {
        stored.insert_or_assign(std::string(key), value);
        saves.push_back({std::string(key), value});
    }

    std::size_t savesOf(std::string_view key) const {
        return static_cast<std::size_t>(std::ranges::count(saves, key, &Save::key));
    }

    std::map<std::string, PreferenceValue, std::less<>> stored;
    std::vector<Save> saves;

  private:
    static bool readAsBoolean(std::string_view text) {
        const auto skip = [&](auto matches, std::size_t atMost) {
            while (atMost-- > 0 && !text.empty() && matches(text.front())) text.remove_prefix(1);
        };
        skip([](char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }, text.size());
        skip([](char c) { return c == '+' || c == '-'; }, 1);
        skip([](char c) { return c == '0'; }, text.size());
        return !text.empty() && std::string_view("YyTt123456789").find(text.front()) != std::string_view::npos;
    }
};

}  // namespace kovra
