#include "BLE_kovra/platform/linux/start/WaylandLaunch.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <string>
#include <thread>
#include <vector>

#include "tests/platform/linux/loop/Turns.h"
#include "tests/platform/linux/start/StandInCompositor.h"
#include "tests/support/Environment.h"

namespace kovra {
namespace {

using Texts = std::vector<std::string>;

// Returns the characters of the literal, zeros included, without its final zero.
template <std::size_t size>
std::string bytes(const char (&literal)[size]) {  // NOLINT
    return {literal, size - 1};
}

class WaylandLaunchTest : public testing::Test {
  protected:
    bool isOver() {
        return turnUntil(loop, [&] { return !launch.isConnected(); });
    }

    SdEventLoop loop;
    WaylandLaunch launch{loop};
};

TEST_F(WaylandLaunchTest, SendsTheIDAndDisconnects) {
    StandInCompositor compositor(loop);
    launch.end("gnome-shell/BLE-kovra/1-0-host_TIME1");
    EXPECT_TRUE(isOver());
    EXPECT_EQ(compositor.requests,
              (Texts{"sync", "bind gtk_shell1 1", "set_startup_id gnome-shell/BLE-kovra/1-0-host_TIME1", "sync"}));
    EXPECT_TRUE(turnUntil(loop, [&] { return compositor.isClientGone; }));
}

TEST_F(WaylandLaunchTest, SendsIDsOfAnyLength) {
    StandInCompositor compositor(loop);
    for (std::size_t length = 1; length <= 9; ++length) {
        compositor.requests.clear();
        launch.end(std::string(length, 'x'));
        EXPECT_TRUE(isOver());
        EXPECT_EQ(compositor.requests.at(2), "set_startup_id " + std::string(length, 'x'));
    }
    compositor.requests.clear();
    launch.end(std::string(1025, 'x'));
    EXPECT_FALSE(launch.isConnected());
}

TEST_F(WaylandLaunchTest, SendsSeveralIDs) {
    StandInCompositor compositor(loop);
    launch.end("one");
    launch.end("two");
    // The requests for these two are on their way when the third ID is added.
    EXPECT_TRUE(turnUntil(loop, [&] { return compositor.requests.size() == 5; }));
    launch.end("three");
    EXPECT_TRUE(isOver());
    EXPECT_EQ(compositor.requests, (Texts{"sync", "bind gtk_shell1 1", "set_startup_id one", "set_startup_id two",
                                          "sync", "sync", "bind gtk_shell1 1", "set_startup_id three", "sync"}));
    EXPECT_EQ(compositor.clients, 2);
}

// As at the program's end, when the loop has stopped.
TEST_F(WaylandLaunchTest, FinishesWithoutTheLoop) {
    SdEventLoop desktop;
    StandInCompositor compositor(desktop);
    launch.end("an id");
    std::thread running([&] { turnUntil(desktop, [&] { return compositor.isClientGone; }); });
    launch.finish();
    EXPECT_FALSE(launch.isConnected());
    running.join();
    EXPECT_EQ(compositor.requests, (Texts{"sync", "bind gtk_shell1 1", "set_startup_id an id", "sync"}));
}

TEST_F(WaylandLaunchTest, FinishesAlthoughTheCompositorHangs) {
    const StandInCompositor compositor(loop);
    launch.end("an id");
    launch.finish();
    EXPECT_TRUE(launch.isConnected());
}

TEST_F(WaylandLaunchTest, DisconnectsIfTheDesktopLacksTheProtocol) {
    StandInCompositor compositor(loop, {"wl_compositor", "gtk_shell", "xdg_activation_v1"});
    launch.end("an id");
    EXPECT_TRUE(isOver());
    EXPECT_EQ(compositor.requests, Texts{"sync"});
}

TEST_F(WaylandLaunchTest, DoesNothingWithoutACompositor) {
    Environment environment;
    environment.set("XDG_RUNTIME_DIR", "/nonexistent");
    for (const char* display : {"", "wayland-0", "/nonexistent/wayland-0"}) {
        environment.set("WAYLAND_DISPLAY", display);
        launch.end("an id");
        EXPECT_FALSE(launch.isConnected());
    }
    environment.set("WAYLAND_DISPLAY", std::string(200, 'x'));
    launch.end("an id");
    EXPECT_FALSE(launch.isConnected());
    environment.unset({"WAYLAND_DISPLAY"});
    launch.end("an id");
    EXPECT_FALSE(launch.isConnected());
}

TEST_F(WaylandLaunchTest, SleepsWhileTheCompositorHangs) {
    StandInCompositor compositor(loop);
    compositor.hangs = true;
    launch.end("an id");
    EXPECT_TRUE(turnUntil(loop, [&] { return !compositor.requests.empty(); }));
    turnsWithin(loop, std::chrono::milliseconds(50));
    EXPECT_LT(turnsWithin(loop, std::chrono::milliseconds(50)), 5);
    EXPECT_TRUE(launch.isConnected());
}

TEST_F(WaylandLaunchTest, DisconnectsAtAnythingUnexpected) {
    const std::string tooShort = bytes("\2\0\0\0\0\0\4\0"), tooLong = bytes("\2\0\0\0\0\0\0\x40");
    const std::string error = bytes("\1\0\0\0\0\0\x14\0\1\0\0\0\0\0\0\0\0\0\0\0");
    for (const std::string& nonsense : {tooShort, tooLong, error}) {
        StandInCompositor compositor(loop);
        compositor.nonsense = nonsense;
        compositor.hangs = true;
        launch.end("an id");
        EXPECT_TRUE(launch.isConnected());
        EXPECT_TRUE(isOver());
    }
}

// A global of which parts are missing or wrong is none, and nothing is read beyond the message.
TEST_F(WaylandLaunchTest, ReadsNothingBeyondAMessage) {
    const std::string done = bytes("\3\0\0\0\0\0\x0C\0\0\0\0\0");
    const std::string nameless = bytes("\2\0\0\0\0\0\x0C\0\x15\0\0\0");
    const std::string overlong = bytes("\2\0\0\0\0\0\x14\0\x15\0\0\0\xFF\xFF\xFF\xFFgtk_");
    const std::string empty = bytes("\2\0\0\0\0\0\x10\0\x15\0\0\0\0\0\0\0");
    for (const std::string& global : {nameless, overlong, empty}) {
        StandInCompositor compositor(loop);
        compositor.nonsense = global + done;
        compositor.hangs = true;
        launch.end("an id");
        EXPECT_TRUE(isOver());
        EXPECT_EQ(compositor.requests.size(), 1U);  // the first one, for the globals
    }
}

TEST(WaylandLaunchSocketTest, IsFoundByTheSessionsVariables) {
    Environment environment;
    environment.set("XDG_RUNTIME_DIR", "/run/user/1000");
    environment.set("WAYLAND_DISPLAY", "wayland-1");
    EXPECT_EQ(waylandSocket(), "/run/user/1000/wayland-1");
    environment.set("WAYLAND_DISPLAY", "/other/socket");
    EXPECT_EQ(waylandSocket(), "/other/socket");
    environment.set("WAYLAND_DISPLAY", "wayland-1");
    environment.unset({"XDG_RUNTIME_DIR"});
    EXPECT_EQ(waylandSocket(), "");
}

}  // namespace
}  // namespace kovra
