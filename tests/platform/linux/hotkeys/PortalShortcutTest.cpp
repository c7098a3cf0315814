// Tests of what the portal tells about the shortcut, and of its presses.

#include "BLE_kovra/platform/linux/hotkeys/PortalShortcut.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "tests/platform/linux/bus/Forger.h"
#include "tests/platform/linux/hotkeys/PortalShortcutRig.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;
using Calls = ShortcutRig::Calls;

TEST(PortalShortcutTest, TellsTheCombinationThatTheDesktopHasAssigned) {
    for (const std::vector<std::string>& remembered : {std::vector<std::string>{}, {"TEST-1"}}) {
        ShortcutRig rig;
        rig.portal.remembered = remembered;
        rig.portal.trigger = "Meta+M";
        rig.requestHotKey();
        EXPECT_EQ(rig.hotKeys.state(), ours("Meta+M"));
    }
}

// GNOME describes a combination by a word in the user's language and an accelerator.
TEST(PortalShortcutTest, TellsAnAcceleratorAsUsersKnowIt) {
    const std::vector<std::pair<std::string, std::string>> described{{"Press <Control><Alt>t", ""},  // as requested
                                                                     {"Press <Shift><Super>m", "Shift+Super+M"},
                                                                     {"Drücken Sie <Primary>Page_Up", "Ctrl+Page Up"},
                                                                     {"<Super>F5", "Super+F5"},
                                                                     {"Press <Control>", "Press <Control>"},
                                                                     {"<>t", "<>t"},
                                                                     {"<Control", "<Control"},
                                                                     {"a < b", "a < b"}};
    for (const auto& [description, name] : described) {
        ShortcutRig rig;
        rig.portal.trigger = description;
        rig.requestHotKey();
        EXPECT_EQ(rig.hotKeys.state(), ours(name)) << description;
    }
}

TEST(PortalShortcutTest, HasAKeyWithoutADialogIfTheDesktopGivesItToANewSession) {
    ShortcutRig rig;
    rig.portal.bindsNewSessions = true;
    rig.registerHotKey();
    EXPECT_EQ(rig.portal.calls, rig.look);
    EXPECT_EQ(rig.hotKeys.state(), ours("Ctrl+Alt+T"));
    EXPECT_EQ(rig.press(), 1);
}

TEST(PortalShortcutTest, TellsEachChangeOfTheCombination) {
    ShortcutRig rig;
    std::vector<HotKeyState> told;
    rig.hotKeys.onStateChange = [&] { told.push_back(rig.hotKeys.state()); };
    rig.requestHotKey();
    rig.portal.assign("Meta+M", rig.portal.session);
    rig.settle();
    rig.portal.assign("Meta+N", "/org/freedesktop/portal/desktop/session/another");
    rig.settle();
    rig.portal.assign("", rig.portal.session);
    rig.settle();
    EXPECT_EQ(told, (std::vector{unrequested, ours("Ctrl+Alt+T"), ours("Meta+M"), refused}));
}

TEST(PortalShortcutTest, TellsThatThereIsNoKeyWithoutAPortalOrAfterAnError) {
    ShortcutRig none;
    none.portal.stop();
    none.requestHotKey();
    EXPECT_EQ(none.hotKeys.state(), nobodys);
    ShortcutRig closed;
    closed.portal.codes["CreateSession"] = 1;
    closed.requestHotKey();
    EXPECT_EQ(closed.hotKeys.state(), nobodys);
    for (const char* method : {"CreateSession", "ListShortcuts"}) {
        ShortcutRig failed;
        failed.portal.errors[method] = "org.freedesktop.portal.Error.Failed";
        failed.requestHotKey();
        EXPECT_EQ(failed.hotKeys.state(), nobodys) << method;
    }
}

TEST(PortalShortcutTest, FollowsAClosedSessionAndAPortalThatIsAway) {
    ShortcutRig rig;
    rig.requestHotKey();
    rig.portal.closeSession();
    rig.settle();
    EXPECT_EQ(rig.hotKeys.state(), refused);
    rig.portal.stop();
    rig.settle();
    EXPECT_EQ(rig.hotKeys.state(), nobodys);
    rig.portal.start();
    rig.settle();
    EXPECT_EQ(rig.hotKeys.state(), unrequested);
}

TEST(PortalShortcutTest, MakesTheDesktopAskNothingByItself) {
    ShortcutRig rig;
    rig.registerHotKey();
    EXPECT_EQ(rig.portal.calls, rig.look);
    EXPECT_EQ(rig.hotKeys.state(), unrequested);
    EXPECT_LT(turnsWithin(rig.loop, 50ms), 5);
    for (int restarts = 0; restarts < 2; ++restarts) {
        rig.portal.stop();
        rig.settle();
        rig.portal.calls.clear();
        rig.portal.start();
        rig.settle();
        EXPECT_EQ(rig.portal.calls, rig.look);
    }
}

TEST(PortalShortcutTest, WorksWithPortalsThatHaveNoRegistry) {
    ShortcutRig rig;
    rig.portal.knowsRegistry = false;
    rig.requestHotKey();
    EXPECT_EQ(rig.portal.calls, (Calls{"Register?", rig.create, "ListShortcuts", rig.bind}));
    EXPECT_EQ(rig.press(), 1);
}

TEST(PortalShortcutTest, ReceivesAResponseThatArrivesBeforeTheReply) {
    ShortcutRig rig;
    rig.portal.answersBeforeItReplies = true;
    rig.requestHotKey();
    EXPECT_EQ(rig.portal.calls, rig.everything);
    EXPECT_EQ(rig.press(), 1);
}

TEST(PortalShortcutTest, StaysSilentAfterAnError) {
    for (const char* method : {"CreateSession", "ListShortcuts"}) {
        ShortcutRig rig;
        rig.portal.errors[method] = "org.freedesktop.portal.Error.Failed";
        rig.requestHotKey();
        EXPECT_EQ(rig.portal.calls.back().substr(0, std::string(method).size()), method);
        EXPECT_EQ(rig.press(), 0);
        EXPECT_LT(turnsWithin(rig.loop, 50ms), 5);
    }
}

TEST(PortalShortcutTest, TakesNoSessionFromAMalformedResponse) {
    for (const char* wrong : {"types", "nothing", "no results", "number", "no path"}) {
        ShortcutRig rig;
        rig.portal.nonsense["CreateSession"] = wrong;
        rig.requestHotKey();
        EXPECT_EQ(rig.portal.calls, (Calls{rig.registration, rig.create})) << wrong;
    }
}

TEST(PortalShortcutTest, IgnoresWhatLaterVersionsAdd) {
    ShortcutRig rig;
    rig.portal.nonsense["CreateSession"] = "more";
    rig.requestHotKey();
    EXPECT_EQ(rig.portal.calls, rig.everything);
}

TEST(PortalShortcutTest, IgnoresOtherShortcutsAndSessions) {
    ShortcutRig rig;
    rig.requestHotKey();
    rig.portal.emitOfShortcut("Activated", rig.portal.session, "TEST-2");
    rig.portal.emitOfShortcut("Activated", rig.portal.session + "1", "TEST-1");
    rig.portal.emit("org.freedesktop.portal.GlobalShortcuts", "Activated");
    rig.settle();
    EXPECT_EQ(rig.pressed, 0);
    EXPECT_EQ(rig.press(), 1);
}

TEST(PortalShortcutTest, CountsARepeatedPressOnce) {
    ShortcutRig rig;
    rig.requestHotKey();
    for (int repeats = 0; repeats < 50; ++repeats) {
        rig.portal.activate();
        rig.settle();
    }
    EXPECT_EQ(rig.pressed, 1);
    rig.portal.deactivate();
    EXPECT_EQ(rig.press(), 1);
}

TEST(PortalShortcutTest, CountsTheNextPressIfTheDesktopReportsNoRelease) {
    ShortcutRig rig;
    rig.requestHotKey();
    rig.portal.activate();
    rig.settle();
    turnsWithin(rig.loop, 1100ms);
    rig.portal.activate();
    rig.settle();
    EXPECT_EQ(rig.pressed, 2);
}

TEST(PortalShortcutTest, IgnoresSignalsThatAnotherClientForges) {
    ShortcutRig rig;
    rig.requestHotKey();
    Forger forger(Forger::Bus::session);
    const std::string program = Forger::nameOf(rig.bus.bus());
    const char* session = rig.portal.session.c_str();
    forger.send(program, "/org/freedesktop/portal/desktop", "org.freedesktop.portal.GlobalShortcuts", "Activated",
                "osta{sv}", session, rig.portal.bound.at(0).c_str(), std::uint64_t{1}, 0);
    forger.send(program, session, "org.freedesktop.portal.Session", "Closed", "");
    rig.settle();
    EXPECT_EQ(rig.pressed, 0);
    EXPECT_EQ(rig.press(), 1);
}

TEST(PortalShortcutTest, ClosesItsSessionWhenItIsDestroyed) {
    ShortcutRig rig;
    rig.requestHotKey();
    rig.hotKey.reset();
    rig.settle();
    EXPECT_EQ(rig.portal.calls.back(), "Close");
    EXPECT_EQ(rig.portal.session, "");
    EXPECT_EQ(rig.press(), 0);
}

TEST(PortalShortcutTest, MayBeDestroyedAtAnyMoment) {
    for (int turns = 0; turns < 90; ++turns) {
        ShortcutRig rig;
        rig.settle();
        rig.hotKey = rig.hotKeys.registerHotKey(ShortcutRig::testHotKey);
        for (int turn = 0; turn < turns; ++turn) {
            bool done = false;
            rig.loop.async([&] { done = true; });
            rig.loop.runUntil([&] { return done; });
            rig.hotKey->request();
        }
        rig.hotKey.reset();
        rig.settle();
        EXPECT_EQ(rig.press(), 0) << turns;
    }
}

TEST(PortalShortcutTest, MayBeDestroyedByItsOwnPress) {
    ShortcutRig rig;
    rig.requestHotKey();
    const auto second = rig.hotKeys.installHandler([&] { return rig.hotKey.reset(), 0; });
    EXPECT_EQ(rig.press(), 1);
    EXPECT_EQ(rig.press(), 0);
}

TEST(PortalShortcutTest, RefusesAnotherKeyOrOtherModifiers) {
    ShortcutRig rig;
    for (const HotKey other : {HotKey{.keyCode = 0x10, .modifiers = ShortcutRig::testHotKey.modifiers},
                               HotKey{.keyCode = HotKey::ansiT, .modifiers = HotKey::controlKey}}) {
        EXPECT_EQ(rig.hotKeys.registerHotKey(other), nullptr);
    }
    rig.settle();
    EXPECT_EQ(rig.portal.calls, Calls{});
}

}  // namespace
}  // namespace kovra
