#include "BLE_kovra/platform/linux/XdgLoginService.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <string>
#include <vector>

#include "BLE_kovra/platform/linux/DesktopEntry.h"
#include "BLE_kovra/platform/linux/SmallTextFile.h"
#include "BLE_kovra/platform/linux/XdgDesktop.h"
#include "BLE_kovra/platform/linux/XdgFolders.h"

namespace kovra {

namespace {

bool canRun(const std::string& program) {
    const auto isExecutable = [](const std::string& path) { return ::access(path.c_str(), X_OK) == 0; };
    if (program.find('/') != std::string::npos) return isExecutable(program);
    const char* path = std::getenv("PATH");
    const std::vector<std::string> folders = splitAtColons(path == nullptr ? "" : path);
    return std::any_of(folders.begin(), folders.end(),
                       [&](const std::string& folder) { return isExecutable(folder + '/' + program); });
}

bool isForThisDesktop(const DesktopEntry& entry) {
    const std::vector<std::string> desktop = desktopNames();
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
