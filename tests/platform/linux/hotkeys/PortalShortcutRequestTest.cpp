// Tests of when the desktop is asked for the shortcut, and of its answers.

#include "BLE_kovra/platform/linux/hotkeys/PortalShortcut.h"

#include <gtest/gtest.h>

#include <cstdint>

#include "tests/platform/linux/hotkeys/PortalShortcutRig.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;
using Calls = ShortcutRig::Calls;

TEST(PortalShortcutRequestTest, RegistersTheApplicationAndBindsANewShortcut) {
    ShortcutRig rig;
    rig.requestHotKey();
    EXPECT_EQ(rig.portal.calls, rig.everything);
    EXPECT_EQ(rig.press(), 1);
    EXPECT_EQ(rig.press(), 1);
}

TEST(PortalShortcutRequestTest, HasAKeyAlsoIfTheDesktopCallsItsConsentAFailure) {
    ShortcutRig rig;
    rig.portal.failsWhenItGrants = true;
    rig.requestHotKey();
    EXPECT_EQ(rig.hotKeys.state(), ours("Ctrl+Alt+T"));
    EXPECT_EQ(rig.press(), 1);
}

TEST(PortalShortcutRequestTest, DoesNotBindAShortcutFromWhichTheUserHasTakenTheKey) {
    ShortcutRig rig;
    rig.portal.remembered = {"TEST-1"};
    rig.portal.trigger = "";
    rig.registerHotKey();
    EXPECT_EQ(rig.portal.calls, rig.look);
    EXPECT_EQ(rig.hotKeys.state(), refused);
    rig.request();
    EXPECT_EQ(rig.portal.calls, rig.everything);
}

TEST(PortalShortcutRequestTest, TellsThatTheUserHasAssignedNoKey) {
    for (const std::uint32_t code : {1U, 2U}) {
        ShortcutRig rig;
        rig.portal.codes["BindShortcuts"] = code;
        rig.requestHotKey();
        EXPECT_EQ(rig.hotKeys.state(), refused) << code;
    }
    ShortcutRig taken;
    taken.portal.isTakenByAnother = true;
    taken.requestHotKey();
    EXPECT_EQ(taken.hotKeys.state(), refused);
}

// The portal accepts one request of a session.
TEST(PortalShortcutRequestTest, AsksAgainInANewSessionAfterARefusal) {
    ShortcutRig rig;
    rig.portal.codes["BindShortcuts"] = 1;
    rig.requestHotKey();
    for (int refusals = 0; refusals < 2; ++refusals) {
        rig.portal.calls.clear();
        rig.request();
        EXPECT_EQ(rig.portal.calls, (Calls{"Close", rig.create, "ListShortcuts", rig.bind}));
        EXPECT_EQ(rig.hotKeys.state(), refused);
    }
    rig.portal.codes.clear();
    rig.request();
    EXPECT_EQ(rig.hotKeys.state(), ours("Ctrl+Alt+T"));
    EXPECT_EQ(rig.press(), 1);
}

TEST(PortalShortcutRequestTest, MayBeMadeAgainAfterAnError) {
    for (const char* method : {"CreateSession", "ListShortcuts", "BindShortcuts"}) {
        ShortcutRig rig;
        rig.portal.codes["BindShortcuts"] = 1;
        rig.requestHotKey();
        rig.portal.errors[method] = "org.freedesktop.portal.Error.Failed";
        for (int errors = 0; errors < 2; ++errors) {
            rig.request();
            EXPECT_EQ(rig.hotKeys.state(), refused) << method;
            EXPECT_LT(turnsWithin(rig.loop, 50ms), 5);
        }
        rig.portal.errors.clear();
        rig.portal.codes.clear();
        rig.request();
        EXPECT_EQ(rig.hotKeys.state(), ours("Ctrl+Alt+T")) << method;
        EXPECT_EQ(rig.press(), 1) << method;
    }
}

TEST(PortalShortcutRequestTest, MayBeMadeAgainIfThePortalOpensNoSessionForIt) {
    ShortcutRig rig;
    rig.portal.codes["BindShortcuts"] = 1;
    rig.requestHotKey();
    rig.portal.codes["CreateSession"] = 2;
    rig.request();
    EXPECT_EQ(rig.hotKeys.state(), refused);
    rig.portal.codes.clear();
    rig.request();
    EXPECT_EQ(rig.hotKeys.state(), ours("Ctrl+Alt+T"));
}

// The failed request leaves no session behind.
TEST(PortalShortcutRequestTest, CountsAsRefusedAfterAnErrorOfTheFirstRequest) {
    ShortcutRig rig;
    rig.portal.errors["BindShortcuts"] = "org.freedesktop.portal.Error.Failed";
    rig.requestHotKey();
    EXPECT_EQ(rig.portal.calls, (Calls{rig.registration, rig.create, "ListShortcuts", rig.bind, "Close"}));
    EXPECT_EQ(rig.hotKeys.state(), refused);
    EXPECT_EQ(rig.press(), 0);
    EXPECT_LT(turnsWithin(rig.loop, 50ms), 5);
}

TEST(PortalShortcutRequestTest, AsksAgainAfterTheDesktopHasClosedTheSessionOrTakenTheKeyAway) {
    ShortcutRig closed;
    closed.requestHotKey();
    closed.portal.closeSession();
    closed.settle();
    closed.portal.calls.clear();
    closed.request();
    EXPECT_EQ(closed.portal.calls, (Calls{closed.create, "ListShortcuts", closed.bind}));
    EXPECT_EQ(closed.press(), 1);

    ShortcutRig taken;
    taken.requestHotKey();
    taken.portal.assign("", taken.portal.session);
    taken.settle();
    taken.portal.trigger = "Meta+M";
    taken.request();
    EXPECT_EQ(taken.hotKeys.state(), ours("Meta+M"));
}

TEST(PortalShortcutRequestTest, OpensOneDialogAtATime) {
    ShortcutRig rig;
    rig.portal.asksTheUser = true;
    rig.registerHotKey();
    for (int requests = 0; requests < 3; ++requests) {
        rig.hotKey->request();
        rig.settle();
        rig.hotKey->request();
    }
    rig.settle();
    EXPECT_EQ(rig.portal.calls, rig.everything);
    rig.portal.codes["BindShortcuts"] = 1;
    rig.portal.answer();
    rig.settle();
    EXPECT_EQ(rig.hotKeys.state(), refused);
    rig.request();
    rig.request();
    EXPECT_EQ(rig.portal.dialogs.size(), 1U);
    rig.portal.codes.clear();
    rig.portal.answer();
    rig.settle();
    EXPECT_EQ(rig.hotKeys.state(), ours("Ctrl+Alt+T"));
}

TEST(PortalShortcutRequestTest, AsksAgainAfterThePortalHasEndedWithTheDialogOpen) {
    ShortcutRig rig;
    rig.portal.asksTheUser = true;
    rig.requestHotKey();
    rig.portal.closeSession();
    rig.settle();
    EXPECT_EQ(rig.hotKeys.state(), refused);
    rig.request();
    rig.portal.stop();
    rig.settle();
    rig.portal.start();
    rig.settle();
    EXPECT_EQ(rig.portal.dialogs.size(), 0U);
    rig.request();
    EXPECT_EQ(rig.portal.dialogs.size(), 1U);
}

TEST(PortalShortcutRequestTest, DoesNotAskForAKeyThatItHas) {
    ShortcutRig rig;
    rig.requestHotKey();
    rig.request();
    EXPECT_EQ(rig.portal.calls, rig.everything);
}

TEST(PortalShortcutRequestTest, DoesNotBindAShortcutThatTheDesktopRemembers) {
    ShortcutRig rig;
    rig.portal.remembered = {"TEST-1"};
    rig.requestHotKey();
    EXPECT_EQ(rig.portal.calls, rig.look);
    EXPECT_EQ(rig.press(), 1);
}

TEST(PortalShortcutRequestTest, IsBoundIfTheDesktopRemembersOnlyOthers) {
    ShortcutRig rig;
    rig.portal.remembered = {"TEST-2"};
    rig.requestHotKey();
    EXPECT_EQ(rig.portal.calls, rig.everything);
}

TEST(PortalShortcutRequestTest, StaysSilentAfterARefusal) {
    for (const std::uint32_t code : {1U, 2U}) {
        ShortcutRig rig;
        rig.portal.codes["CreateSession"] = code;
        rig.requestHotKey();
        EXPECT_EQ(rig.portal.calls, (Calls{rig.registration, rig.create}));

        ShortcutRig other;
        other.portal.codes["BindShortcuts"] = code;
        other.requestHotKey();
        EXPECT_EQ(other.portal.calls, rig.everything);
        EXPECT_EQ(other.press(), 0);
    }
}

TEST(PortalShortcutRequestTest, IsBoundIfTheListIsRefused) {
    ShortcutRig rig;
    rig.portal.codes["ListShortcuts"] = 2;
    rig.requestHotKey();
    EXPECT_EQ(rig.portal.calls, rig.everything);
    EXPECT_EQ(rig.press(), 1);
}

TEST(PortalShortcutRequestTest, IsBoundAfterAMalformedList) {
    for (const char* wrong : {"types", "nothing", "no results", "number", "strings"}) {
        ShortcutRig rig;
        rig.portal.nonsense["ListShortcuts"] = wrong;
        rig.requestHotKey();
        EXPECT_EQ(rig.portal.calls, rig.everything) << wrong;
        EXPECT_EQ(rig.press(), 1) << wrong;
    }
}

TEST(PortalShortcutRequestTest, IsNotBoundAgainAfterTheDesktopHasClosedTheSession) {
    ShortcutRig rig;
    rig.requestHotKey();
    rig.portal.closeSession();
    rig.settle();
    EXPECT_EQ(rig.portal.calls, rig.everything);
    rig.hotKey.reset();
    rig.settle();
    EXPECT_EQ(rig.portal.calls, rig.everything);
}

TEST(PortalShortcutRequestTest, IsBoundAgainAfterThePortalHasRestarted) {
    ShortcutRig rig;
    rig.requestHotKey();
    for (int restarts = 0; restarts < 3; ++restarts) {
        rig.portal.stop();
        rig.settle();
        rig.portal.calls.clear();
        rig.portal.start();
        rig.settle();
        rig.request();
        EXPECT_EQ(rig.portal.calls, rig.everything);
        EXPECT_EQ(rig.press(), 1);
    }
}

TEST(PortalShortcutRequestTest, IsBoundByAPortalThatStartsLate) {
    ShortcutRig rig;
    rig.portal.stop();
    rig.requestHotKey();
    EXPECT_EQ(rig.portal.calls, Calls{});
    EXPECT_LT(turnsWithin(rig.loop, 50ms), 5);
    rig.portal.start();
    rig.settle();
    rig.request();
    EXPECT_EQ(rig.portal.calls, rig.everything);
    EXPECT_EQ(rig.press(), 1);
}

TEST(PortalShortcutRequestTest, IsBoundAgainAfterTheBusHasRestarted) {
    ShortcutRig rig;
    rig.requestHotKey();
    rig.portal.stop();
    rig.daemon.restart();
    ASSERT_TRUE(turnUntil(rig.loop, [&] { return rig.bus.bus() == nullptr; }));
    rig.portal.calls.clear();
    rig.portal.start();
    ASSERT_TRUE(turnUntil(rig.loop, [&] { return !rig.portal.calls.empty(); }));
    rig.settle();
    rig.request();
    EXPECT_EQ(rig.portal.calls, rig.everything);
    EXPECT_EQ(rig.press(), 1);
}

}  // namespace
}  // namespace kovra
