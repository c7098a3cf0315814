#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kovra {

// Reads the environment variables of the session: the display server, the names of the desktop, and the configuration
// directories. freedesktop.org's base directory rules (0.8) define the latter.

// The display server of the user's session.
enum class Desktop { none, x11, wayland };

// Prefers Wayland if both displays are set. A Wayland session may run an X server too, but that server can start and
// exit at any time. It also receives only the keys that are typed into its own windows.
Desktop currentDesktop();

// The desktop names in $XDG_CURRENT_DESKTOP, the most specific one first.
std::vector<std::string> desktopNames();

// $XDG_CONFIG_HOME, or .config in the home directory. A relative path counts as unset. Empty if the user has no home
// directory.
std::string userConfigFolder();

// $XDG_CONFIG_DIRS, or /etc/xdg; the most important directory first. Relative paths are ignored.
std::vector<std::string> systemConfigFolders();

// Splits a colon-separated list.
std::vector<std::string> splitAtColons(std::string_view list);

// Whether the two lists have a name in common.
bool anyOf(const std::vector<std::string>& some, const std::vector<std::string>& others);

}  // namespace kovra
