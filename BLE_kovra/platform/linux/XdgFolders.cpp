#include "BLE_kovra/platform/linux/XdgFolders.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace kovra {

namespace {

std::string absoluteFolder(const char* variable) {
    const char* value = std::getenv(variable);
    return value != nullptr && value[0] == '/' ? value : std::string();
}

std::string homeFolder() {
    if (std::string home = absoluteFolder("HOME"); !home.empty()) return home;
    const passwd* entry = ::getpwuid(::getuid());
    return entry != nullptr && entry->pw_dir != nullptr ? entry->pw_dir : std::string();
}

}  // namespace

std::string userConfigFolder() {
    if (std::string folder = absoluteFolder("XDG_CONFIG_HOME"); !folder.empty()) return folder;
    const std::string home = homeFolder();
    return home.empty() ? home : home + "/.config";
}

std::vector<std::string> systemConfigFolders() {
    std::vector<std::string> folders;
    const char* value = std::getenv("XDG_CONFIG_DIRS");
    for (std::string_view left = value == nullptr ? "" : value; !left.empty();) {
        const auto end = left.find(':');
        const std::string_view folder = left.substr(0, end);
        if (folder.starts_with('/')) folders.emplace_back(folder);
        left.remove_prefix(end == std::string_view::npos ? left.size() : end + 1);
    }
    if (folders.empty()) folders.emplace_back("/etc/xdg");
    return folders;
}

}  // namespace kovra
