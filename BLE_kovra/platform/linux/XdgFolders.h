#pragma once

#include <string>
#include <vector>

namespace kovra {

// Where freedesktop.org's base directories (0.8) have configuration. Relative paths in the environment count as unset.

// $XDG_CONFIG_HOME, or .config in the user's home in its stead. Empty for a user without a home.
std::string userConfigFolder();

// $XDG_CONFIG_DIRS, or /etc/xdg in its stead; the most important first.
std::vector<std::string> systemConfigFolders();

}  // namespace kovra
