#include "BLE_kovra/platform/linux/XdgFolders.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>

#include "BLE_kovra/platform/linux/XdgDesktop.h"

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
    const char* value = std::getenv("XDG_CONFIG_DIRS");
    std::vector<std::string> folders = splitAtColons(value == nullptr ? "" : value);
    std::erase_if(folders, [](const std::string& folder) { return !folder.starts_with('/'); });
    if (folders.empty()) folders.emplace_back("/etc/xdg");
    return folders;
}

}  // namespace kovra
