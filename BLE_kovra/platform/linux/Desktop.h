#pragma once

#include <cstdlib>

namespace kovra {

// What the user's session draws its windows with.
enum class Desktop { none, x11, wayland };

// As the environment tells. A Wayland session may have an X server on the side, which starts and ends as it likes and
// sees no keys but those of its own windows: the session is Wayland's.
inline Desktop currentDesktop() {
    const auto isNamed = [](const char* variable) {
        const char* value = std::getenv(variable);
        return value != nullptr && *value != '\0';
    };
    if (isNamed("WAYLAND_DISPLAY")) return Desktop::wayland;
    return isNamed("DISPLAY") ? Desktop::x11 : Desktop::none;
}

}  // namespace kovra
