#include "BLE_kovra/platform/linux/XdgLoginService.h"

#include <cerrno>
#include <string>
#include <vector>

#include "BLE_kovra/platform/linux/DesktopEntry.h"
#include "BLE_kovra/platform/linux/ProgramSearch.h"
#include "BLE_kovra/platform/linux/SmallTextFile.h"
#include "BLE_kovra/platform/linux/XdgDesktop.h"
#include "BLE_kovra/platform/linux/XdgFolders.h"

namespace kovra {

namespace {

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
    if (!program || !findProgram(*program) || (needed && !findProgram(*needed))) return LoginStatus::notFound;
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
