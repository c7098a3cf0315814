// Tests of the window process on an X server (Xvfb) with a window manager.

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QProcess>
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "BLE_kovra/platform/linux/wire/Encoding.h"
#include "BLE_kovra/platform/linux/wire/LineSocket.h"
#include "tests/platform/linux/ui/XProperties.h"
#include "tests/support/Environment.h"
#include "tests/support/linux/VirtualScreen.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra {
namespace {

bool waitFor(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

class ProgramScreenTest : public testing::Test {
    struct OnX : Environment {
        OnX() {
            set("QT_QPA_PLATFORM", "xcb");
            set("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
        }
    };

  protected:
    ProgramScreenTest() {
        EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
        // openbox announces itself shortly before it manages windows. A window that appears in between is never
        // managed. So the test waits until openbox runs its startup command, which it does after that.
        const std::string started = folder / "started";
        manager.start("openbox", {"--startup", QString::fromStdString("touch " + started)});
        EXPECT_TRUE(waitFor([&] { return std::filesystem::exists(started); }));
        program.setChildProcessModifier([this] { ::dup2(ends[1], windowSocket); });
        program.start(KOVRA_WINDOW_PROGRAM, QStringList());
        EXPECT_TRUE(program.waitForStarted());
        ::close(ends[1]);
    }
    ~ProgramScreenTest() override {
        ::close(ends[0]);
        EXPECT_TRUE(program.waitForFinished());
        manager.kill();
        manager.waitForFinished();
    }

    void showAlert() const {
        ShowAlerts shown;
        shown.alerts.push_back({1, "", {"Mute?", "For good", {"Yes", "No"}}});
        ASSERT_TRUE(sendLine(ends[0], encode(ToWindow(shown))));
    }
    std::vector<std::uint32_t> windows() const { return x.values(x.root(), "_NET_CLIENT_LIST"); }

    const TempFolder folder;
    const VirtualScreen screen{"640x480x24"};
    const OnX onX;
    XProperties x;
    QProcess manager;
    std::array<int, 2> ends{};
    QProcess program;
};

TEST_F(ProgramScreenTest, GivesItsWindowsTheClassInTheDesktopEntry) {
    showAlert();
    ASSERT_TRUE(waitFor([&] { return !windows().empty(); }));
    const std::string both = x.text(windows().front(), "WM_CLASS");  // two names, each followed by a zero
    const std::string name = both.substr(both.find('\0') + 1);
    EXPECT_NE(readFile(KOVRA_DESKTOP_ENTRY).find("\nStartupWMClass=" + std::string(name.c_str()) + "\n"),
              std::string::npos)
        << name;
}

TEST_F(ProgramScreenTest, GivesItsWindowsTheIconOfTheApplication) {
    showAlert();
    std::vector<std::uint32_t> icon;
    ASSERT_TRUE(waitFor([&] {
        for (const auto window : windows()) icon = x.values(window, "_NET_WM_ICON");
        return !icon.empty();
    }));
    // Each size is preceded by its width and height.
    EXPECT_EQ(icon.size(), 3 * 2 + 16U * 16U + 32U * 32U + 64U * 64U);
    EXPECT_NE(std::find(icon.begin(), icon.end(), 0xFF3A7BE0), icon.end());  // the color of the icon's tile
}

}  // namespace
}  // namespace kovra
