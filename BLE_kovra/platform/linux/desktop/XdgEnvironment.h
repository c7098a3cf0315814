#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kovra {

// Functions that read the session's display server, the names of its desktop and the configuration directories from
// environment variables. freedesktop.org's base directory rules (0.8) define these directories.

// The display server of the user's session.
enum class Desktop { none, x11, wayland };

// Returns `wayland` if the variables of both display servers are set. A Wayland session may run an X server too, but
// that server can start and exit at any time. It also receives only the keys that are typed into its own windows.
Desktop currentDesktop();

// Returns the desktop names in $XDG_CURRENT_DESKTOP, the most specific one first.
std::vector<std::string> desktopNames();

// Returns $XDG_CONFIG_HOME, or .config in the home directory if the variable is not set. A relative path counts as not
// set. Returns an empty path if the variable is not set and the user has no home directory.
std::string userConfigFolder();

// Returns the directories in $XDG_CONFIG_DIRS, or /etc/xdg; the most important directory comes first. Relative paths
// are ignored.
std::vector<std::string> systemConfigFolders();

// Returns $XDG_DATA_HOME, or .local/share in the home directory, and then the directories in $XDG_DATA_DIRS, or
// /usr/local/share and /usr/share. The most important directory comes first. Relative paths are ignored.
std::vector<std::string> dataFolders();

std::vector<std::string> splitAtColons(std::string_view list);

// Returns whether the two lists have a name in common.
bool anyOf(const std::vector<std::string>& some, const std::vector<std::string>& others);

}  // namespace kovra
