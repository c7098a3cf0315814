#include "BLE_kovra/platform/linux/start/TrayPresence.h"

#include <gtest/gtest.h>

#include <string>

#include "BLE_kovra/platform/linux/tray/StatusNotifierWatcher.h"
#include "BLE_kovra/platform/linux/windows/WindowProcess.h"
#include "tests/platform/linux/loop/Turns.h"
#include "tests/platform/linux/tray/Panel.h"
#include "tests/support/Environment.h"
#include "tests/support/linux/PrivateBus.h"

namespace kovra {
namespace {

using Icon = StatusNotifierWatcher::Icon;

// A session bus, on which the test starts a panel. Nothing has been received from the bus yet.
class TrayPresenceTest : public testing::Test {
  protected:
    std::string adviceOn(const std::string& desktop) {
        environment_.set("XDG_CURRENT_DESKTOP", desktop);
        return tray.advice();
    }
    bool waitFor(Icon icon) {
        return turnUntil(loop, [&] { return watcher.icon() == icon; });
    }
    void registerItem() {
        ASSERT_TRUE(turnUntil(loop, [&] { return bus.connection() != nullptr; }));
        watcher.setItem("/StatusNotifierItem");
    }

    PrivateBus daemon{"DBUS_SESSION_BUS_ADDRESS"};
    SdEventLoop loop;
    SessionBus bus{loop};
    StatusNotifierWatcher watcher{bus};
    WindowProcess window{loop, [] { return std::string(); }};
    TrayPresence tray{watcher, window};

  private:
    Environment environment_;
};

TEST_F(TrayPresenceTest, HasTheIconOnceAHostsWatcherHasAcceptedIt) {
    EXPECT_FALSE(tray.hasIcon());
    Panel panel(loop, Panel::Hosts::none);
    registerItem();
    ASSERT_TRUE(panel.findsItem());
    EXPECT_TRUE(waitFor(Icon::notShown));
    EXPECT_FALSE(tray.hasIcon());
    panel.setHost(Panel::Hosts::one);
    EXPECT_TRUE(waitFor(Icon::shown));
    EXPECT_TRUE(tray.hasIcon());
    EXPECT_STREQ(tray.name(), "panel");
    panel.setHost(Panel::Hosts::none);
    EXPECT_TRUE(waitFor(Icon::notShown));
    EXPECT_FALSE(tray.hasIcon());
}

TEST_F(TrayPresenceTest, HasNoIconInAPanelThatRefusesIt) {
    Panel panel(loop);
    panel.refusesItems = true;
    registerItem();
    ASSERT_TRUE(turnUntil(loop, [&] { return watcher.hasHost(); }));
    EXPECT_STREQ(tray.name(), "none");
    panel.refusesItems = false;
    panel.setHost(Panel::Hosts::one);
    EXPECT_TRUE(waitFor(Icon::shown));
    EXPECT_STREQ(tray.name(), "panel");
}

TEST_F(TrayPresenceTest, KnowsNothingWhileTheBusIsAway) {
    const Panel panel(loop);
    registerItem();
    ASSERT_TRUE(waitFor(Icon::shown));
    daemon.end();
    EXPECT_TRUE(waitFor(Icon::unknown));
    EXPECT_FALSE(tray.hasIcon());
}

TEST_F(TrayPresenceTest, HasTheIconWhileItsWindowIsEmbedded) {
    EXPECT_STREQ(tray.name(), "none");
    window.show(ShowTray());
    EXPECT_TRUE(tray.hasIcon());
    EXPECT_STREQ(tray.name(), "embedded");
    window.hideTray();
    EXPECT_FALSE(tray.hasIcon());
}

TEST_F(TrayPresenceTest, GivesAdviceOnGNOMEWithoutATrayOnly) {
    ASSERT_TRUE(waitFor(Icon::notShown));
    EXPECT_EQ(adviceOn("GNOME"), "tray.advice");
    EXPECT_EQ(adviceOn("GNOME-Classic:GNOME"), "tray.advice");
    EXPECT_EQ(adviceOn("sway"), "");
    EXPECT_EQ(adviceOn(""), "");
    window.show(ShowTray());
    EXPECT_EQ(adviceOn("GNOME-Flashback:GNOME"), "");
}

TEST_F(TrayPresenceTest, GivesNoAdviceBeforeTheDesktopHasReplied) { EXPECT_EQ(adviceOn("GNOME"), ""); }

TEST_F(TrayPresenceTest, GivesNoAdviceWithATray) {
    const Panel panel(loop);
    ASSERT_TRUE(turnUntil(loop, [&] { return watcher.hasHost(); }));
    EXPECT_EQ(adviceOn("ubuntu:GNOME"), "");
}

}  // namespace
}  // namespace kovra
