#include "BLE_kovra/platform/linux/theme/XTray.h"

#include <gtest/gtest.h>

#include <chrono>
#include <iomanip>
#include <ios>
#include <optional>
#include <sstream>
#include <string>

#include "tests/platform/linux/loop/Turns.h"
#include "tests/platform/linux/theme/StandInTray.h"
#include "tests/support/linux/VirtualScreen.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;

struct XTrayRig {
    VirtualScreen screen;
    SdEventLoop loop;
    std::unique_ptr<XConnection> x = XConnection::open(loop);
    XTray tray{*x};
    std::string reports;
    XTray::Token watching;
    std::optional<StandInTray> panel;

    void watch() { watching = tray.watch(recorder(reports)); }
    static std::function<void(const XTray::State&)> recorder(std::string& reports) {
        return [&reports](const XTray::State& state) {
            std::ostringstream text;
            if (state.color) text << ' ' << std::hex << std::setw(6) << std::setfill('0') << *state.color;
            reports += (state.isPresent ? "present" : "absent") + text.str() + "; ";
        };
    }
    bool reported(const std::string& wanted) {
        return turnUntil(loop, [&] { return reports == wanted; });
    }
    // Waits until the server has handled all requests so far, and the events that they caused have been delivered.
    void settle() {
        for (int round = 0; round < 4; ++round) {
            bool isServed = false;
            const auto served = x->whenServed([&] { isServed = true; });
            ASSERT_TRUE(turnUntil(loop, [&] { return isServed; }));
        }
    }
};

TEST(XTrayTest, ReportsATrayAndTheColorThatItAnnounces) {
    XTrayRig rig;
    rig.panel.emplace().announce(0x2E3436);
    rig.panel->appear();
    rig.watch();
    EXPECT_TRUE(rig.reported("present 2e3436; "));
}

TEST(XTrayTest, ReportsATrayThatAnnouncesNoColor) {
    XTrayRig rig;
    rig.panel.emplace().appear();
    rig.watch();
    EXPECT_TRUE(rig.reported("present; "));
}

TEST(XTrayTest, ReportsEachChangeOfTheColor) {
    XTrayRig rig;
    rig.panel.emplace().appear();
    rig.watch();
    EXPECT_TRUE(rig.reported("present; "));
    rig.panel->announce(0xFF8000);
    EXPECT_TRUE(rig.reported("present; present ff8000; "));
    rig.panel->announce(0x0000FF);
    EXPECT_TRUE(rig.reported("present; present ff8000; present 0000ff; "));
    rig.panel->announceNothing();
    EXPECT_TRUE(rig.reported("present; present ff8000; present 0000ff; present; "));
}

TEST(XTrayTest, ReportsATrayThatStartsLateExitsAndStartsAgain) {
    XTrayRig rig;
    rig.watch();
    rig.settle();
    EXPECT_EQ(rig.reports, "");
    rig.panel.emplace().announce(0xFFFFFF);
    rig.panel->appear();
    EXPECT_TRUE(rig.reported("present ffffff; "));
    rig.panel.reset();
    EXPECT_TRUE(rig.reported("present ffffff; absent; "));
    rig.panel.emplace().announce(0x000000);
    rig.panel->appear();
    EXPECT_TRUE(rig.reported("present ffffff; absent; present 000000; "));
}

TEST(XTrayTest, ReportsTheColorOfTheTrayThatReplacesAnother) {
    XTrayRig rig;
    rig.panel.emplace().announce(0xFFFFFF);
    rig.panel->appear();
    rig.watch();
    EXPECT_TRUE(rig.reported("present ffffff; "));
    StandInTray other;
    other.announce(0x000000);
    other.appear();
    EXPECT_TRUE(rig.reported("present ffffff; present 000000; "));
    rig.panel->announce(0x808080);
    rig.settle();
    EXPECT_EQ(rig.reports, "present ffffff; present 000000; ");
}

TEST(XTrayTest, IgnoresColorsThatAreNotAnnouncedAsTheyShouldBe) {
    XTrayRig rig;
    rig.panel.emplace().appear();
    rig.watch();
    EXPECT_TRUE(rig.reported("present; "));
    rig.panel->announce({0xFFFF, 0xFFFF, 0xFFFF}, XCB_ATOM_CARDINAL);
    rig.panel->announce(std::vector<std::uint32_t>(12, 0xFFFF), XCB_ATOM_INTEGER);
    rig.settle();
    EXPECT_EQ(rig.reports, "present; ");
}

TEST(XTrayTest, ServesSeveralAtOnceAndTellsALateOneWhatIsKnown) {
    XTrayRig rig;
    rig.panel.emplace().announce(0xFFFFFF);
    rig.panel->appear();
    rig.watch();
    EXPECT_TRUE(rig.reported("present ffffff; "));
    std::string others;
    auto second = rig.tray.watch(XTrayRig::recorder(others));
    EXPECT_EQ(others, "");  // only from the queue
    EXPECT_TRUE(turnUntil(rig.loop, [&] { return others == "present ffffff; "; }));
    rig.watching.reset();
    rig.panel->announce(0x000000);
    EXPECT_TRUE(turnUntil(rig.loop, [&] { return others == "present ffffff; present 000000; "; }));
    EXPECT_EQ(rig.reports, "present ffffff; ");
}

TEST(XTrayTest, IsNotWokenWhenNobodyWatches) {
    XTrayRig rig;
    rig.panel.emplace().appear();
    rig.watch();
    EXPECT_TRUE(rig.reported("present; "));
    rig.watching.reset();
    rig.settle();
    int events = 0;
    const auto listening = rig.x->listen([&](const xcb_generic_event_t&) { ++events; });
    rig.panel->announce(0x000000);
    rig.panel.reset();
    StandInTray().appear();
    rig.settle();
    EXPECT_EQ(events, 0);
    EXPECT_EQ(rig.reports, "present; ");
}

TEST(XTrayTest, CausesNoWakeUpsWhileNothingChanges) {
    XTrayRig rig;
    rig.panel.emplace().appear();
    rig.watch();
    EXPECT_TRUE(rig.reported("present; "));
    rig.settle();
    EXPECT_LT(turnsWithin(rig.loop, 100ms), 4);
}

}  // namespace
}  // namespace kovra
