#include "BLE_kovra/platform/PreferencesStore.h"

#include <algorithm>

namespace kovra {

namespace {

bool readAsBoolean(std::string_view text) {
    const auto skip = [&](std::string_view characters) {
        text.remove_prefix(std::min(text.find_first_not_of(characters), text.size()));
    };
    skip(" \t\n\v\f\r");
    if (!text.empty() && (text.front() == '+' || text.front() == '-')) text.remove_prefix(1);
    skip("0");
    return !text.empty() && std::string_view("YyTt123456789").find(text.front()) != std::string_view::npos;
}

}  // namespace

bool PreferencesStore::boolean(std::string_view key) const {
    const auto value = object(key);
    if (!value) return false;
    if (const auto* truth = std::get_if<bool>(&*value)) return *truth;
    if (const auto* number = std::get_if<double>(&*value)) return *number != 0;
    const auto* text = std::get_if<std::string>(&*value);
    return text != nullptr && readAsBoolean(*text);
}

}  // namespace kovra
