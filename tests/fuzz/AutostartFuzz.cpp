#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

#include "BLE_kovra/platform/linux/desktop/DesktopEntry.h"
#include "BLE_kovra/platform/linux/desktop/XdgLoginService.h"
#include "tests/fuzz/Promise.h"
#include "tests/support/posix/TempFolder.h"

// The user's autostart entry with any content: launch at login can always be switched on and off.

namespace {

using namespace kovra;

// A session whose only autostart entry is the user's own.
struct Session {
    Session() {
        std::filesystem::create_directories(folder / "user/autostart");
        std::filesystem::create_directories(folder / "system");
        ::setenv("XDG_CONFIG_HOME", (folder / "user").c_str(), 1);
        ::setenv("XDG_CONFIG_DIRS", (folder / "system").c_str(), 1);
        ::setenv("XDG_CURRENT_DESKTOP", "GNOME", 1);
    }
    TempFolder folder{TempFolder::Where::memory};
    std::string entry = folder / (std::string("user/autostart/") + XdgLoginService::entryName);
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Session session;
    constexpr const char* program = "/bin/true";
    const std::string_view text = fuzz::textOf(data, size);
    writeFile(session.entry, text);

    XdgLoginService login(program);
    static_cast<void>(login.status());
    fuzz::promise(readFile(session.entry) == text, "looking changes nothing");
    fuzz::promise(static_cast<bool>(login.registerApplication()), "it can be switched on");
    fuzz::promise(login.status() == LoginStatus::enabled, "it is on after it was switched on");
    const std::string written = readFile(session.entry);
    fuzz::promise(DesktopEntry(written).program() == program, "the desktop starts this program");
    fuzz::promise(static_cast<bool>(login.registerApplication()) && readFile(session.entry) == written,
                  "switching it on twice changes nothing more");
    fuzz::promise(static_cast<bool>(login.unregisterApplication()), "it can be switched off");
    fuzz::promise(login.status() == LoginStatus::notRegistered, "it is off after it was switched off");
    fuzz::promise(static_cast<bool>(login.registerApplication()) && login.status() == LoginStatus::enabled,
                  "it can be switched on again");
    return 0;
}
