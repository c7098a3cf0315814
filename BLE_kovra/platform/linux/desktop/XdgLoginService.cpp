#include "BLE_kovra/platform/linux/desktop/XdgLoginService.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <sstream>
#include <string>
#include <vector>

#include "BLE_kovra/platform/Utf8.h"
#include "BLE_kovra/platform/linux/desktop/DesktopEntry.h"
#include "BLE_kovra/platform/linux/desktop/ProgramSearch.h"
#include "BLE_kovra/platform/linux/desktop/SmallTextFile.h"
#include "BLE_kovra/platform/linux/desktop/XdgEnvironment.h"
#include "BLE_kovra/platform/posix/Refusal.h"

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

std::string entryIn(const std::string& folder) { return folder + "/autostart/" + XdgLoginService::entryName; }

// Whether an entry stands in the way of all that come after it. One that cannot be read does so too.
bool isThere(int errorOfReading) { return errorOfReading != ENOENT && errorOfReading != ENOTDIR; }

bool systemHasAnEntry() {
    const std::vector<std::string> folders = systemConfigFolders();
    return std::any_of(folders.begin(), folders.end(), [](const std::string& folder) {
        std::string text;
        return isThere(SmallTextFile(entryIn(folder)).read(text));
    });
}

// It asks no desktop to wait for its panel: muting needs none, and the icon comes with the panel.
constexpr const char* freshEntry =
    "[Desktop Entry]\n"
    "Type=Application\n"
    "Name=BLE-kovra\n"
    "Exec=\n"
    "Icon=ble-kovra\n"
    "X-GNOME-Autostart-enabled=true\n";

// Whether removing it loses nothing that the user, or the desktop's settings, put there. A program that stood elsewhere
// is none of theirs: registering would replace it too.
bool saysNoMoreThanOurs(const DesktopEntry& entry) {
    DesktopEntry ours(freshEntry);
    ours.setProgram(entry.program().value_or(""));
    const std::string known = '\n' + ours.text();
    std::istringstream lines(entry.text());
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty() && known.find('\n' + line + '\n') == std::string::npos) return false;
    }
    return true;
}

// Does this to the user's own entry, or to a new one where there is none yet.
template <typename Change>
Outcome edit(const std::string& program, Change change) {
    const std::string folder = userConfigFolder();
    if (folder.empty()) return refusal(ENOENT);
    const SmallTextFile file(entryIn(folder));
    std::string text;
    if (const int error = file.read(text); error != 0 && isThere(error)) return refusal(error);
    DesktopEntry entry(text);
    if (!entry.hasMainGroup()) {
        entry = DesktopEntry(freshEntry);
        entry.setProgram(program);
    }
    change(entry);
    const int error = file.replace(entry.text(), SmallTextFile::Old::replaced, SmallTextFile::Link::replaced);
    return error == 0 ? Outcome::success() : refusal(error);
}

}  // namespace

LoginStatus XdgLoginService::status() const {
    std::vector<std::string> folders = systemConfigFolders();
    const std::string own = userConfigFolder();
    if (own.empty()) return LoginStatus::notFound;
    folders.insert(folders.begin(), own);
    for (const std::string& folder : folders) {
        std::string text;
        const int error = SmallTextFile(entryIn(folder)).read(text);
        if (error == 0) return statusOf(DesktopEntry(text));
        if (isThere(error)) return LoginStatus::notFound;
    }
    return LoginStatus::notRegistered;
}

Outcome XdgLoginService::registerApplication() {
    // An entry is UTF-8.
    if (!isUtf8(program_)) return refusal(EILSEQ);
    return edit(program_, [this](DesktopEntry& entry) {
        entry.set("Type", "Application");
        if (!entry.string("Name")) entry.set("Name", "BLE-kovra");
        // Its arguments may be the user's.
        if (entry.program() != program_) entry.setProgram(program_);
        const auto needed = entry.string("TryExec");
        if (needed && !findProgram(*needed)) entry.remove("TryExec");
        entry.remove("Hidden");
        entry.set("X-GNOME-Autostart-enabled", "true");
        if (isForThisDesktop(entry)) return;
        entry.remove("OnlyShowIn");
        entry.remove("NotShowIn");
    });
}

Outcome XdgLoginService::unregisterApplication() {
    const auto hide = [](DesktopEntry& entry) { entry.set("Hidden", "true"); };
    if (systemHasAnEntry()) return edit(program_, hide);
    const std::string folder = userConfigFolder();
    if (folder.empty()) return refusal(ENOENT);
    std::string text;
    if (const int error = SmallTextFile(entryIn(folder)).read(text); error != 0 && isThere(error))
        return refusal(error);
    if (!saysNoMoreThanOurs(DesktopEntry(text))) return edit(program_, hide);
    const bool isGone = ::unlink(entryIn(folder).c_str()) == 0 || !isThere(errno);
    return isGone ? Outcome::success() : refusal(errno);
}

}  // namespace kovra
