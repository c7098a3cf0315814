#include "BLE_kovra/platform/linux/desktop/XdgLoginService.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <string_view>
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

LoginStatus statusOf(const DesktopEntry& entry, const PathVisitor& visitor) {
    if (entry.boolean("Hidden") == true || entry.boolean("X-GNOME-Autostart-enabled") == false) {
        return LoginStatus::notRegistered;
    }
    const auto needed = entry.string("TryExec");
    const auto program = entry.program();
    if (!program || !findProgram(*program, visitor) || (needed && !findProgram(*needed, visitor)))
        return LoginStatus::notFound;
    return isForThisDesktop(entry) ? LoginStatus::enabled : LoginStatus::requiresApproval;
}

std::string entryIn(const std::string& folder) { return folder + "/autostart/" + XdgLoginService::entryName; }

// Returns whether an entry exists, given the error of reading it. An entry that cannot be read exists, and so overrides
// the entries in all later directories.
bool entryExists(int readError) { return readError != ENOENT && readError != ENOTDIR; }

bool systemHasEntry() {
    const std::vector<std::string> folders = systemConfigFolders();
    return std::any_of(folders.begin(), folders.end(), [](const std::string& folder) {
        std::string text;
        return entryExists(SmallTextFile(entryIn(folder)).read(text));
    });
}

// The entry does not make the desktop start its panel first. Muting needs no panel, and the icon appears as soon as
// there is a panel.
constexpr const char* newEntry =
    "[Desktop Entry]\n"
    "Type=Application\n"
    "Name=BLE-kovra\n"
    "Exec=\n"
    "Icon=ble-kovra\n"
    "X-GNOME-Autostart-enabled=true\n";

// Returns whether the entry has no lines from the user or from the settings of the desktop, so that removing it loses
// nothing. A different program path does not count as such a line, because registering would replace it too.
bool hasOnlyOwnLines(const DesktopEntry& entry) {
    DesktopEntry ours(newEntry);
    ours.setProgram(entry.program().value_or(""));
    const std::string known = '\n' + ours.text();
    const std::string text = entry.text();
    std::string_view lines = text;
    while (!lines.empty()) {
        const std::string line(lines.substr(0, lines.find('\n')));
        if (!line.empty() && known.find('\n' + line + '\n') == std::string::npos) return false;
        lines.remove_prefix(std::min(line.size() + 1, lines.size()));
    }
    return true;
}

// Applies `change` to the user's own entry. Creates the entry if there is none.
template <typename Change>
Outcome edit(const std::string& program, Change change) {
    const std::string folder = userConfigFolder();
    if (folder.empty()) return refusal(ENOENT);
    const SmallTextFile file(entryIn(folder));
    std::string text;
    if (const int error = file.read(text); error != 0 && entryExists(error)) return refusal(error);
    DesktopEntry entry(text);
    if (!entry.hasMainGroup()) {
        entry = DesktopEntry(newEntry);
        entry.setProgram(program);
    }
    change(entry);
    const int error = file.replace(entry.text(), SmallTextFile::Old::replaced, SmallTextFile::Link::replaced);
    return error == 0 ? Outcome::success() : refusal(error);
}

}  // namespace

LoginStatus XdgLoginService::read(const PathVisitor& visitor) const {
    std::vector<std::string> folders = systemConfigFolders();
    const std::string own = userConfigFolder();
    if (own.empty()) return LoginStatus::notFound;
    folders.insert(folders.begin(), own);
    for (const std::string& folder : folders) {
        const std::string path = entryIn(folder);
        visitor(path);
        std::string text;
        const int error = SmallTextFile(path).read(text);
        if (error == 0) return statusOf(DesktopEntry(text), visitor);
        if (entryExists(error)) return LoginStatus::notFound;
    }
    return LoginStatus::notRegistered;
}

Outcome XdgLoginService::registerApplication() {
    // Desktop entries are UTF-8.
    if (!isUtf8(program_)) return refusal(EILSEQ);
    return edit(program_, [this](DesktopEntry& entry) {
        entry.set("Type", "Application");
        if (!entry.string("Name")) entry.set("Name", "BLE-kovra");
        // Keep an Exec line with this program, since the user may have added arguments.
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
    if (systemHasEntry()) return edit(program_, hide);
    const std::string folder = userConfigFolder();
    if (folder.empty()) return refusal(ENOENT);
    std::string text;
    if (const int error = SmallTextFile(entryIn(folder)).read(text); error != 0 && entryExists(error))
        return refusal(error);
    if (!hasOnlyOwnLines(DesktopEntry(text))) return edit(program_, hide);
    const bool isRemoved = ::unlink(entryIn(folder).c_str()) == 0 || !entryExists(errno);
    return isRemoved ? Outcome::success() : refusal(errno);
}

}  // namespace kovra
