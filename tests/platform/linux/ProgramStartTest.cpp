// Tests of a start by the user on X, with the real program, its window process and a real window manager.

#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <functional>
#include <initializer_list>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/Environment.h"
#include "tests/support/linux/Onlooker.h"
#include "tests/support/linux/PrivateBus.h"
#include "tests/support/linux/RootListener.h"
#include "tests/support/linux/VirtualScreen.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;
using Texts = std::vector<std::string>;

// A desktop without a tray: an X server, openbox, and a session bus.
class ProgramStartTest : public testing::Test {
  protected:
    ProgramStartTest() {
        environment_.unset({"WAYLAND_DISPLAY", "XDG_SESSION_TYPE", "XDG_RUNTIME_DIR", "XDG_ACTIVATION_TOKEN"});
        environment_.set("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus");
        environment_.set("HOME", folder_.path().string());
        environment_.set("XDG_CONFIG_HOME", folder_ / "config");
        const std::string ready = folder_ / "ready";
        const std::string command = "touch " + ready;
        processes_.push_back(spawn({"openbox", "--startup", command.c_str()}));
        EXPECT_TRUE(waitUntil([&] { return std::filesystem::exists(ready); }));
    }
    ~ProgramStartTest() override {
        for (const pid_t process : processes_) {
            ::kill(process, SIGTERM);
            ::waitpid(process, nullptr, 0);
        }
    }

    void start(const std::string& startupID) {
        environment_.set("DESKTOP_STARTUP_ID", startupID);
        processes_.push_back(spawn({KOVRA_PROGRAM}));
    }
    static bool waitUntil(const std::function<bool()>& condition) {
        const auto end = std::chrono::steady_clock::now() + 60s;
        while (!condition() && std::chrono::steady_clock::now() < end) std::this_thread::sleep_for(10ms);
        return condition();
    }
    bool isWindowInFront() { return onlooker.hasKeyboard("BLE-kovra"); }
    // The settings window is higher than any alert.
    bool areSettingsOpen() {
        const auto place = onlooker.window("BLE-kovra");
        return place && place->height > 400;
    }
    // Answers the alert that says that the driver is not active, if the machine has no active driver.
    bool answerAlert() {
        if (areSettingsOpen()) return true;
        constexpr xcb_keycode_t escape = 9;
        onlooker.tap(escape);
        return waitUntil([this] { return areSettingsOpen(); });
    }

  private:
    static pid_t spawn(std::initializer_list<const char*> words) {
        std::vector<char*> arguments;
        for (const char* word : words) arguments.push_back(const_cast<char*>(word));
        arguments.push_back(nullptr);
        pid_t process = 0;
        EXPECT_EQ(::posix_spawnp(&process, arguments[0], nullptr, nullptr, arguments.data(), environ), 0);
        return process;
    }

    const TempFolder folder_;
    Environment environment_;
    const PrivateBus daemon_{"DBUS_SESSION_BUS_ADDRESS"};
    const VirtualScreen screen_{"800x600x24"};
    std::vector<pid_t> processes_;

  protected:
    RootListener listener;
    Onlooker onlooker;
};

TEST_F(ProgramStartTest, EndsTheDesktopsFeedbackWhenItsFirstWindowIsShown) {
    start("menu/ble-kovra/1-0-host_TIME1");
    EXPECT_TRUE(waitUntil([this] { return isWindowInFront(); }));
    EXPECT_TRUE(waitUntil([this] { return !listener.messages().empty(); }));
    EXPECT_EQ(listener.messages(), Texts{"remove: ID=menu/ble-kovra/1-0-host_TIME1"});
}

TEST_F(ProgramStartTest, OpensTheSettingsForANewUserWithoutATray) {
    start("menu/ble-kovra/1-0-host_TIME1");
    EXPECT_TRUE(waitUntil([this] { return isWindowInFront(); }));
    EXPECT_TRUE(answerAlert());
}

}  // namespace
}  // namespace kovra
