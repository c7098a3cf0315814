#include "BLE_kovra/platform/linux/desktop/XdgEnvironment.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

namespace kovra {

namespace {

bool isSet(const char* variable) {
    const char* value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

std::string absoluteFolder(const char* variable) {
    const char* value = std::getenv(variable);
    return value != nullptr && value[0] == '/' ? value : std::string();
}

std::vector<std::string> absoluteFolders(const char* variable) {
    const char* value = std::getenv(variable);
    std::vector<std::string> folders = splitAtColons(value == nullptr ? "" : value);
    std::erase_if(folders, [](const std::string& folder) { return !folder.starts_with('/'); });
    return folders;
}

std::string homeFolder() {
    if (std::string home = absoluteFolder("HOME"); !home.empty()) return home;
    const passwd* entry = ::getpwuid(::getuid());
    return entry != nullptr && entry->pw_dir != nullptr ? entry->pw_dir : std::string();
}

}  // namespace

Desktop currentDesktop() {
    if (isSet("WAYLAND_DISPLAY")) return Desktop::wayland;
    return isSet("DISPLAY") ? Desktop::x11 : Desktop::none;
}

std::vector<std::string> desktopNames() {
    const char* names = std::getenv("XDG_CURRENT_DESKTOP");
    return splitAtColons(names == nullptr ? "" : names);
}

std::string userConfigFolder() {
    if (std::string folder = absoluteFolder("XDG_CONFIG_HOME"); !folder.empty()) return folder;
    const std::string home = homeFolder();
    return home.empty() ? home : home + "/.config";
}

std::vector<std::string> systemConfigFolders() {
    std::vector<std::string> folders = absoluteFolders("XDG_CONFIG_DIRS");
    if (folders.empty()) folders.emplace_back("/etc/xdg");
    return folders;
}

std::vector<std::string> dataFolders() {
    std::vector<std::string> folders = absoluteFolders("XDG_DATA_DIRS");
    if (folders.empty()) folders = {"/usr/local/share", "/usr/share"};
    std::string own = absoluteFolder("XDG_DATA_HOME");
    if (const std::string home = homeFolder(); own.empty() && !home.empty()) own = home + "/.local/share";
    if (!own.empty()) folders.insert(folders.begin(), own);
    return folders;
}

std::vector<std::string> splitAtColons(std::string_view list) {
    std::vector<std::string> parts;
    while (!list.empty()) {
        const auto end = list.find(':');
        parts.emplace_back(list.substr(0, end));
        list.remove_prefix(end == std::string_view::npos ? list.size() : end + 1);
    }
    return parts;
}

bool anyOf(const std::vector<std::string>& some, const std::vector<std::string>& others) {
    return std::find_first_of(some.begin(), some.end(), others.begin(), others.end()) != some.end();
}

}  // namespace kovra
