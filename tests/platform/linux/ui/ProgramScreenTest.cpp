// Tests of the window process on an X server (Xvfb) with a window manager.

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QProcess>
#include <QRect>
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
#include "tests/platform/linux/ui/SampleView.h"
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
        panel = x.showPanel(panelHeight);
        EXPECT_TRUE(waitFor([&] { return workArea() == QRect(0, panelHeight, 800, 480 - panelHeight); }));
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

    void showAlert() const { show(ShowAlerts{.alerts = {{1, "", {"Mute?", "For good", {"Yes", "No"}}}}}); }
    // Returns the windows of the program.
    std::vector<std::uint32_t> windows() const {
        auto all = x.values(x.root(), "_NET_CLIENT_LIST");
        std::erase(all, panel);
        return all;
    }
    QRect workArea() const {
        const auto all = x.values(x.root(), "_NET_WORKAREA");
        return all.size() < 4 ? QRect() : QRect(int(all[0]), int(all[1]), int(all[2]), int(all[3]));
    }
    // Returns the place of the program's window, with its frame, or an empty rectangle.
    QRect frame() const {
        for (const auto window : windows()) {
            const auto extents = x.values(window, "_NET_FRAME_EXTENTS");
            const QRect inside = x.place(window);
            if (extents.size() == 4)
                return inside.adjusted(-int(extents[0]), -int(extents[2]), int(extents[1]), int(extents[3]));
        }
        return {};
    }
    void expectCentered() {
        EXPECT_TRUE(waitFor([&] { return (frame().center() - workArea().center()).manhattanLength() <= 2; }));
        EXPECT_TRUE(workArea().contains(frame())) << frame().top() << " to " << frame().bottom();
        EXPECT_GT(frame().height(), x.place(windows().back()).height()) << "it has no frame";
    }
    void show(const ToWindow& state) const { ASSERT_TRUE(sendLine(ends[0], encode(state))); }
    void showSettings(int devices) {
        sample::Content content;
        content.devices = sample::mice(devices);
        ShowWindow shown{.title = "BLE-kovra", .styleMask = 7, .contentSize = {440, 480}, .front = 1};
        shown.content = sample::view(content);
        show(shown);
    }

    static constexpr int panelHeight = 30;
    const TempFolder folder;
    const VirtualScreen screen{"800x480x24"};
    const OnX onX;
    XProperties x;
    std::uint32_t panel = 0;
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

TEST_F(ProgramScreenTest, CentersAnAlertByItsFrame) {
    showAlert();
    expectCentered();
}

TEST_F(ProgramScreenTest, CentersTheSettingsByTheirFrameAndInsideALowScreen) {
    showSettings(0);
    expectCentered();
}

TEST_F(ProgramScreenTest, KeepsTheSettingsWithALongListInsideALowScreen) {
    showSettings(50);
    expectCentered();
}

TEST_F(ProgramScreenTest, ShowsAlertsAsDialogs) {
    showAlert();
    const auto isDialog = [&](std::uint32_t window) {
        const auto types = x.values(window, "_NET_WM_WINDOW_TYPE");
        return !types.empty() && types.front() == x.atom("_NET_WM_WINDOW_TYPE_DIALOG");
    };
    EXPECT_TRUE(waitFor([&] {
        const auto all = windows();
        return std::any_of(all.begin(), all.end(), isDialog);
    }));
}

TEST_F(ProgramScreenTest, RequestsTheFrontInTheNameOfTheUser) {
    x.followActivations();
    std::vector<std::uint32_t> sources;
    showAlert();
    EXPECT_TRUE(waitFor([&] {
        const auto more = x.activations();
        sources.insert(sources.end(), more.begin(), more.end());
        return std::find(sources.begin(), sources.end(), 2U) != sources.end();
    }));
}

}  // namespace
}  // namespace kovra
