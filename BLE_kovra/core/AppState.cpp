#include "BLE_kovra/core/AppState.h"

#include <algorithm>
#include <utility>
#include <variant>

#include "BLE_kovra/platform/Platform.h"
#include "BLE_kovra/platform/PreferencesStore.h"

namespace kovra {

namespace {

// Returns the texts of an array. Returns nullopt if the value is not an array, or if any of its elements is not a text.
std::optional<AppState::Selection> textsOf(const PreferenceValue& stored) {
    const auto* array = std::get_if<PreferenceArray>(&stored);
    if (array == nullptr) return std::nullopt;
    AppState::Selection texts;
    for (const PreferenceValue& element : *array) {
        const auto* text = std::get_if<std::string>(&element);
        if (text == nullptr) return std::nullopt;
        texts.insert(*text);
    }
    return texts;
}

}  // namespace

std::optional<AppState::BlockMode> AppState::modeFromRawValue(std::string_view rawValue) {
    for (const BlockMode mode : {BlockMode::always, BlockMode::onDevice}) {
        if (rawValue == AppState::rawValue(mode)) return mode;
    }
    return std::nullopt;
}

std::string_view AppState::rawValue(BlockMode mode) { return mode == BlockMode::always ? "always" : "onDevice"; }

AppState::AppState(PreferencesStore& store) : defaults(store) {
    if (const auto stored = defaults.object(kSelected)) {
        if (auto texts = textsOf(*stored)) selectedIDs.set(std::move(*texts));
    }
    if (defaults.object(kEnabled)) isEnabled.set(defaults.boolean(kEnabled));
    if (const auto stored = defaults.object(kMode)) {
        const auto* text = std::get_if<std::string>(&*stored);
        if (const auto known = text ? modeFromRawValue(*text) : std::nullopt) mode.set(*known);
    }
}

AppState& AppState::shared() {
    static AppState instance(Platform::current().preferences);
    return instance;
}

void AppState::saveSelected() const {
    const Selection& selected = selectedIDs.get();
    defaults.set(kSelected, PreferenceArray(selected.begin(), selected.end()));
}

void AppState::saveMode() const { defaults.set(kMode, std::string(rawValue(mode.get()))); }

bool AppState::anySelectedConnected() const {
    const Selection& selected = selectedIDs.get();
    if (selected.empty()) return false;
    const auto& all = devices.get();
    return std::any_of(all.begin(), all.end(),
                       [&](const HIDDeviceInfo& device) { return device.connected && selected.contains(device.id); });
}

}  // namespace kovra
