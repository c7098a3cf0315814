#include "BLE_kovra/platform/linux/XdgLoginService.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "BLE_kovra/platform/linux/DesktopEntry.h"
#include "BLE_kovra/platform/linux/SmallTextFile.h"
#include "BLE_kovra/platform/linux/XdgFolders.h"

namespace kovra {

namespace {

std::vector<std::string> split(std::string_view text) {
    std::vector<std::string> parts;
    while (!text.empty()) {
        const auto end = text.find(':');
        parts.emplace_back(text.substr(0, end));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    return parts;
}

std::string variable(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::string() : value;
}

bool canRun(const std::string& program) {
    const auto isExecutable = [](const std::string& path) { return ::access(path.c_str(), X_OK) == 0; };
    if (program.find('/') != std::string::npos) return isExecutable(program);
    const std::vector<std::string> folders = split(variable("PATH"));
    return std::any_of(folders.begin(), folders.end(),
                       [&](const std::string& folder) { return isExecutable(folder + '/' + program); });
}

bool anyOf(const std::vector<std::string>& some, const std::vector<std::string>& others) {
    return std::find_first_of(some.begin(), some.end(), others.begin(), others.end()) != some.end();
}

bool isForThisDesktop(const DesktopEntry& entry) {
    const std::vector<std::string> desktop = split(variable("XDG_CURRENT_DESKTOP"));
    if (entry.string("OnlyShowIn") && !anyOf(desktop, entry.list("OnlyShowIn"))) return false;
    return !anyOf(desktop, entry.list("NotShowIn"));
}

LoginStatus statusOf(const DesktopEntry& entry) {
    if (entry.boolean("Hidden") == true || entry.boolean("X-GNOME-Autostart-enabled") == false) {
        return LoginStatus::notRegistered;
    }
    const auto needed = entry.string("TryExec");
    const auto program = entry.program();
    if (!program || !canRun(*program) || (needed && !canRun(*needed))) return LoginStatus::notFound;
    return isForThisDesktop(entry) ? LoginStatus::enabled : LoginStatus::requiresApproval;
}

}  // namespace

LoginStatus XdgLoginService::status() const {
    std::vector<std::string> folders = systemConfigFolders();
    const std::string own = userConfigFolder();
    if (own.empty()) return LoginStatus::notFound;
    folders.insert(folders.begin(), own);
    for (const std::string& folder : folders) {
        std::string text;
        const int error = SmallTextFile(folder + "/autostart/" + entryName).read(text);
        if (error == 0) return statusOf(DesktopEntry(text));
        if (error != ENOENT && error != ENOTDIR)
            return LoginStatus::notFound;  // it stands there, but nobody can use it
    }
    return LoginStatus::notRegistered;
}

}  // namespace kovra
