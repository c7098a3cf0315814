// Tests of the status item that the delegate controls: what the item shows, and what its menu does.

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <string>
#include <vector>

#include "BLE_kovra/app/StatusMenu.h"
#include "tests/support/AppRig.h"
#include "tests/support/Dump.h"

namespace kovra {
namespace {

using Texts = std::vector<std::string>;

using enum MenuItemState;

// Positions in the menu.
constexpr std::size_t block = 0;
constexpr std::size_t settings = 2;
constexpr std::size_t launchAtLogin = 3;
constexpr std::size_t activate = 4;
constexpr std::size_t about = 5;

struct Rig : Computer, AppRig {
    Rig() : AppRig(static_cast<Computer&>(*this)) {}

    void choose(std::size_t position) {
        statusBar.choose(position);
        queue.run();
    }
};

struct LaunchedMenuRig : Rig {
    LaunchedMenuRig() {
        launch();
        queue.run();
    }
};

TEST(AppDelegateStatusItemTest, IsAsWideAsItsIcon) {
    const LaunchedMenuRig rig;
    EXPECT_EQ(rig.statusBar.lengths, std::vector{-1.0});
}

TEST(AppDelegateStatusItemTest, ShowsThePlainIconFirstThenTheMenuThenTheDecision) {
    Computer computer;
    computer.preferences.stored.emplace("blockMode", std::string("always"));
    AppRig rig(computer);
    rig.launch();
    EXPECT_EQ(computer.statusBar.calls,
              (Texts{"plain image", "template", "menu", "tag 1 on", "tag 2 off", "slashed image", "template"}));
}

TEST(AppDelegateStatusItemTest, ShowsThePlainIconUntilTheFirstDecisionEvenIfThePreviousRunEndedMuted) {
    Computer computer;
    computer.preferences.stored.emplace("blockMode", std::string("always"));
    computer.files.contents[HelperController::stateFile] = "on";
    AppRig rig(computer);
    rig.delegate->setupStatusItem();
    EXPECT_FALSE(computer.statusBar.hasSlash());
    EXPECT_TRUE(computer.statusBar.imageIsTemplate);
    EXPECT_EQ(computer.statusBar.toolTip, "Trackpad active");
    rig.delegate->evaluate();
    EXPECT_TRUE(computer.statusBar.hasSlash());
    EXPECT_EQ(computer.statusBar.toolTip, "Trackpad muted");
}

TEST(AppDelegateStatusItemTest, HasTheWholeMenuFromTheStart) {
    LaunchedMenuRig rig;
    ASSERT_TRUE(rig.statusBar.menu);
    EXPECT_EQ(dump(*rig.statusBar.menu), dump(makeStatusMenu(rig.texts, {}, on, off)));
}

TEST(AppDelegateStatusItemTest, FollowsFromTheQueueWhatTheDesktopSaysAboutTheHotKey) {
    LaunchedMenuRig rig;
    rig.preferences.saves.clear();
    rig.state.isEnabled.set(false);
    rig.queue.run();
    rig.hotKeys.change({HotKeyState::Holder::us, "Meta+M"});
    EXPECT_EQ(rig.statusBar.menu->items[1].title, "Shortcut: Ctrl+Opt+T");
    rig.queue.run();
    EXPECT_EQ(rig.statusBar.menu->items[1].title, rig.texts.s("menu.hotkeyHint.assigned") + "Meta+M");
    EXPECT_EQ(rig.statusBar.stateOf(StatusMenuTag::enabled), off);
}

TEST(AppDelegateStatusItemTest, ShowsWhatTheDesktopHasSaidDuringTheRegistration) {
    Computer computer;
    computer.hotKeys.stateWhenRegistered = {HotKeyState::Holder::another, ""};
    AppRig rig(computer);
    rig.launch();
    computer.queue.run();
    EXPECT_EQ(computer.statusBar.menu->items[1].title, rig.texts.s("menu.hotkeyHint.taken"));
}

TEST(AppDelegateStatusItemTest, KeepsItsMenuWhenTheDesktopSaysSomethingAfterTheEnd) {
    LaunchedMenuRig rig;
    rig.delegate->applicationWillTerminate();
    rig.statusBar.calls.clear();
    rig.hotKeys.change({HotKeyState::Holder::nobody, ""});
    rig.queue.run();
    EXPECT_TRUE(rig.statusBar.calls.empty());
}

TEST(AppDelegateStatusItemTest, ShowsTheSavedSwitch) {
    Computer computer;
    computer.preferences.stored.emplace("isEnabled", false);
    AppRig rig(computer);
    rig.delegate->setupStatusItem();
    EXPECT_EQ(computer.statusBar.stateOf(StatusMenuTag::enabled), off);
}

TEST(AppDelegateStatusItemTest, RefreshesTheSwitchThenTheLoginItemThenTheIcon) {
    LaunchedMenuRig rig;
    rig.statusBar.calls.clear();
    rig.delegate->refreshUI();
    EXPECT_EQ(rig.statusBar.calls, (Texts{"tag 1 on", "tag 2 off", "plain image", "template"}));
}

TEST(AppDelegateStatusItemTest, ItemsThatOpenWindowsChangeNothing) {
    LaunchedMenuRig rig;
    rig.statusBar.calls.clear();
    for (const std::size_t position : {settings, activate, about}) rig.choose(position);
    EXPECT_TRUE(rig.preferences.saves.empty());
    EXPECT_EQ(rig.flagWrites(), Texts{"off"});
    EXPECT_FALSE(rig.application.terminated);
}

TEST(AppDelegateStatusItemTest, LaunchAtLoginIsCheckedExactlyWhileItIsEnabled) {
    for (const auto& [status, mark] :
         {std::pair(LoginStatus::notRegistered, off), std::pair(LoginStatus::enabled, on),
          std::pair(LoginStatus::requiresApproval, off), std::pair(LoginStatus::notFound, off)}) {
        Rig rig;
        rig.login.current = status;
        rig.delegate->setupStatusItem();
        EXPECT_EQ(rig.statusBar.stateOf(StatusMenuTag::launchAtLogin), mark) << "built, " << static_cast<int>(status);

        rig.login.current = LoginStatus::notRegistered;
        rig.delegate->refreshUI();
        EXPECT_EQ(rig.statusBar.stateOf(StatusMenuTag::launchAtLogin), off);
        rig.login.current = status;
        rig.delegate->refreshUI();
        EXPECT_EQ(rig.statusBar.stateOf(StatusMenuTag::launchAtLogin), mark) << "shown, " << static_cast<int>(status);
    }
}

TEST(AppDelegateStatusItemTest, ChoosingLaunchAtLoginTogglesItAndRefreshesNothingElse) {
    LaunchedMenuRig rig;
    rig.statusBar.calls.clear();
    rig.choose(launchAtLogin);
    rig.choose(launchAtLogin);
    EXPECT_EQ(rig.login.calls, (Texts{"register", "unregister"}));
    EXPECT_EQ(rig.statusBar.calls, (Texts{"tag 2 on", "tag 2 off"}));
}

TEST(AppDelegateStatusItemTest, AFailedToggleShowsTheSystemsStatus) {
    LaunchedMenuRig rig;
    rig.login.current = LoginStatus::enabled;
    rig.login.reasonToFail = "Disk full";
    rig.choose(launchAtLogin);
    EXPECT_EQ(rig.statusBar.stateOf(StatusMenuTag::launchAtLogin), on);
    EXPECT_EQ(rig.log.lines, Texts{"ble-kovra: не удалось переключить автозапуск: Disk full"});
}

TEST(AppDelegateStatusItemTest, TheMenuWorksWithoutAButton) {
    Rig rig;
    rig.statusBar.hasButton = false;
    rig.launch();
    rig.choose(block);
    EXPECT_EQ(rig.statusBar.stateOf(StatusMenuTag::enabled), off);
    EXPECT_FALSE(rig.statusBar.image);
}

TEST(AppDelegateStatusItemTest, AnImageThatCouldNotBeMadeIsNotFlagged) {
    Rig rig;
    rig.statusBar.makesImages = false;
    rig.launch();
    EXPECT_FALSE(rig.statusBar.imageIsTemplate);
    EXPECT_EQ(std::count(rig.statusBar.calls.begin(), rig.statusBar.calls.end(), "template"), 0);
}

TEST(AppDelegateStatusItemTest, TheIconIsShownWithoutAMenu) {
    Computer computer;
    computer.statusBar.keepsMenus = false;
    computer.preferences.stored.emplace("blockMode", std::string("always"));
    AppRig rig(computer);
    rig.launch();
    computer.queue.run();
    EXPECT_TRUE(computer.statusBar.hasSlash());
}

TEST(AppDelegateStatusItemTest, ItsActionsDoNothingWithoutTheDelegate) {
    LaunchedMenuRig rig;
    const Menu menu = *rig.statusBar.menu;
    rig.delegate.reset();
    for (const MenuItem& item : menu.items) {
        if (item.action) item.action->perform();
    }
    EXPECT_TRUE(rig.state.isEnabled.get());
    EXPECT_FALSE(rig.application.terminated);
}

TEST(AppDelegateStatusItemDeathTest, RefreshingWithoutAnItemStopsTheProcess) {
    const Rig rig;
    EXPECT_EXIT(rig.delegate->refreshUI(), testing::KilledBySignal(SIGABRT), "");
    EXPECT_EXIT(rig.delegate->toggleLaunchAtLogin(), testing::KilledBySignal(SIGABRT), "");
    EXPECT_EXIT(rig.delegate->evaluate(), testing::KilledBySignal(SIGABRT), "");
}

TEST(AppDelegateStatusItemDeathTest, AMissingItemStopsTheProcess) {
    Rig rig;
    rig.statusBar.givesItems = false;
    EXPECT_EXIT(rig.delegate->setupStatusItem(), testing::KilledBySignal(SIGABRT), "");
}

}  // namespace
}  // namespace kovra
