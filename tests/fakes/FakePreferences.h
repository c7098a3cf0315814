#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "BLE_kovra/platform/PreferencesStore.h"

namespace kovra {

// Typed preferences in memory. Every save is recorded.
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
    void set(std::string_view key, const PreferenceValue& value) override {
        stored.insert_or_assign(std::string(key), value);
        saves.push_back({std::string(key), value});
    }

    std::size_t savesOf(std::string_view key) const {
        return static_cast<std::size_t>(std::ranges::count(saves, key, &Save::key));
    }

    std::map<std::string, PreferenceValue, std::less<>> stored;
    std::vector<Save> saves;
};

}  // namespace kovra
