#include "BLE_kovra/platform/linux/hotkeys/AcceleratorName.h"

#include <algorithm>

namespace kovra {

namespace {

// The other modifiers are named as on their keys: Shift, Alt, Super, Meta.
std::string nameOfModifier(std::string_view modifier) {
    return modifier == "Control" || modifier == "Primary" ? "Ctrl" : std::string(modifier);
}

// GTK names a key by its keysym: "t", "F5", "Page_Up".
std::string nameOfKey(std::string_view keysym) {
    std::string name(keysym);
    std::replace(name.begin(), name.end(), '_', ' ');
    if (name.front() >= 'a' && name.front() <= 'z') name.front() = static_cast<char>(name.front() - 'a' + 'A');
    return name;
}

}  // namespace

std::optional<std::string> acceleratorName(std::string_view description) {
    const auto begin = description.find('<');
    if (begin == std::string_view::npos) return std::nullopt;
    std::string_view rest = description.substr(begin);
    std::string name;
    while (rest.starts_with('<')) {
        const auto end = rest.find('>');
        if (end == std::string_view::npos || end == 1) return std::nullopt;
        name += nameOfModifier(rest.substr(1, end - 1)) + "+";
        rest.remove_prefix(end + 1);
    }
    if (rest.empty() || rest.find_first_of(" <>") != std::string_view::npos) return std::nullopt;
    return name + nameOfKey(rest);
}

}  // namespace kovra
