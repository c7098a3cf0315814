#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kovra {

// What the session's environment variables say: the display server, the desktop's names, and where freedesktop.org's
// base directories (0.8) have configuration.

// What the user's session draws its windows with.
enum class Desktop { none, x11, wayland };

// Wayland wins where both have a display: a Wayland session may have an X server on the side, which starts and ends as
// it likes and sees no keys but those of its own windows.
Desktop currentDesktop();

// $XDG_CURRENT_DESKTOP: the names that the user's desktop goes by, the most particular first.
std::vector<std::string> desktopNames();

// $XDG_CONFIG_HOME, or .config in the user's home. A relative path counts as unset. Empty for a user without a home.
std::string userConfigFolder();

// $XDG_CONFIG_DIRS, or /etc/xdg; the most important first. Relative paths are left out.
std::vector<std::string> systemConfigFolders();

// The parts of a list that colons separate.
std::vector<std::string> splitAtColons(std::string_view list);

// Whether one of the names is among the others.
bool anyOf(const std::vector<std::string>& some, const std::vector<std::string>& others);

}  // namespace kovra
