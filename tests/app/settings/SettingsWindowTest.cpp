#include "BLE_kovra/app/settings/SettingsWindow.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "BLE_kovra/core/AppState.h"
#include "BLE_kovra/l10n/L10n.h"
#include "tests/fakes/FakeMainQueue.h"
#include "tests/fakes/FakePreferences.h"
#include "tests/fakes/FakeWindows.h"
#include "tests/support/ViewDump.h"

namespace kovra {
namespace {

using Texts = std::vector<std::string>;

struct WindowRig {
    bool shows(const std::string& text) const {
        return ViewDump::of(screen.shown).find('"' + text + '"') != std::string::npos;
    }

    FakeMainQueue queue;
    FakePreferences preferences;
    FakeWindows screen;
    AppState state{preferences};
    L10n texts{{"en"}};
    std::unique_ptr<SettingsWindow> window = std::make_unique<SettingsWindow>(screen, queue, state, texts);
};

TEST(SettingsWindowTest, FollowsEveryPropertyOfTheStateWhileItIsVisible) {
    WindowRig rig;
    rig.window->makeKeyAndOrderFront();
    rig.state.devices.set({{"A#1:2", "Alpha", true}});
    rig.queue.run();
    EXPECT_TRUE(rig.shows("Alpha"));
    const auto changes = [&](auto change) {
        const std::string before = ViewDump::of(rig.screen.shown);
        change();
        rig.queue.run();
        return ViewDump::of(rig.screen.shown) != before;
    };
    EXPECT_TRUE(changes([&] { rig.state.selectedIDs.set({"A#1:2"}); }));
    EXPECT_TRUE(changes([&] { rig.state.isEnabled.set(false); }));
    EXPECT_TRUE(changes([&] { rig.state.mode.set(AppState::BlockMode::always); }));
    EXPECT_TRUE(changes([&] { rig.state.blocking.set(true); }));
}

TEST(SettingsWindowTest, IsRebuiltOncePerTurn) {
    WindowRig rig;
    rig.window->makeKeyAndOrderFront();
    const int before = rig.screen.contents;
    for (int i = 0; i < 100; ++i) rig.state.blocking.set(i % 2 == 0);
    EXPECT_EQ(rig.queue.queued(), 1U);
    rig.queue.run();
    EXPECT_EQ(rig.screen.contents, before + 1);
    rig.state.blocking.set(true);
    rig.queue.run();
    EXPECT_EQ(rig.screen.contents, before + 2);
}

TEST(SettingsWindowTest, IsNotRebuiltWhileItIsHidden) {
    WindowRig rig;
    rig.state.blocking.set(true);
    EXPECT_TRUE(rig.queue.isIdle());
    rig.window->makeKeyAndOrderFront();
    rig.state.devices.set({{"A#1:2", "Alpha", true}});
    rig.screen.close();
    const int before = rig.screen.contents;
    rig.queue.run();
    EXPECT_EQ(rig.screen.contents, before);
}

TEST(SettingsWindowTest, IsUpToDateWhenItIsShownAgain) {
    WindowRig rig;
    rig.window->makeKeyAndOrderFront();
    rig.screen.close();
    rig.state.blocking.set(true);
    rig.window->makeKeyAndOrderFront();
    EXPECT_TRUE(rig.shows("Trackpad muted"));
    EXPECT_EQ(rig.screen.calls.back(), "front");
}

TEST(SettingsWindowTest, IsNotRebuiltAfterItsDestruction) {
    WindowRig rig;
    rig.window->makeKeyAndOrderFront();
    rig.state.blocking.set(true);
    rig.window.reset();
    const int before = rig.screen.contents;
    rig.queue.run();
    EXPECT_EQ(rig.screen.contents, before);
    rig.state.blocking.set(false);
    EXPECT_TRUE(rig.queue.isIdle());
}

}  // namespace
}  // namespace kovra
