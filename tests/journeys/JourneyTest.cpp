// Tests of the whole application on fakes, from launch to quit.

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "BLE_kovra/app/BLE_kovraApp.h"
#include "tests/journeys/Mouse.h"
#include "tests/support/AppRig.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;
using Mode = AppState::BlockMode;
using Texts = std::vector<std::string>;

const DeviceDescription keyboard = aMouse("Keyboard").ids(1, 2);

TEST(JourneyTest, FirstLaunchWithAnEmptyStoreWritesOffAndSavesNothing) {
    Computer computer;
    computer.hid.attach(mouse);
    AppRig rig(computer);
    rig.launch();
    EXPECT_EQ(computer.flagWrites(), Texts{"off"});
    computer.queue.advance(10s);
    EXPECT_EQ(computer.flagWrites(), Texts{"off"});
    EXPECT_TRUE(computer.preferences.saves.empty());
    EXPECT_TRUE(computer.log.lines.empty());
}

TEST(JourneyTest, ASelectedMousePresentAtLaunchMutesOneTurnAfterItIsPublished) {
    Computer computer;
    computer.choose({mouse});
    computer.hid.attach(mouse);
    AppRig rig(computer);
    rig.launch();
    EXPECT_EQ(computer.flagWrites(), Texts{"off"});
    EXPECT_TRUE(rig.state.devices.get().empty());
    computer.queue.runOneTurn();  // publishes the device
    EXPECT_EQ(computer.flagWrites(), Texts{"off"});
    computer.queue.runOneTurn();
    EXPECT_EQ(computer.flagWrites(), (Texts{"off", "on"}));
    EXPECT_TRUE(rig.state.blocking.get());
}

TEST(JourneyTest, FirstLaunchShowsThePlainIconAndACheckMarkAtBlock) {
    Computer computer;
    AppRig rig(computer);
    rig.launch();
    computer.queue.advance(10s);
    EXPECT_FALSE(computer.statusBar.hasSlash());
    EXPECT_EQ(computer.statusBar.stateOf(1), MenuItemState::on);
}

TEST(JourneyTest, TheIconFollowsTheMouse) {
    Computer computer;
    computer.choose({mouse});
    AppRig rig(computer);
    rig.launch();
    const auto plugged = computer.hid.attach(mouse);
    computer.queue.run();
    EXPECT_TRUE(computer.statusBar.hasSlash());
    computer.hid.detach(plugged);
    computer.queue.advance(2s - 1ns);
    EXPECT_TRUE(computer.statusBar.hasSlash());
    computer.queue.advance(1ns);
    EXPECT_FALSE(computer.statusBar.hasSlash());
}

TEST(JourneyTest, TheMenuUnmutesAndMutesAgainWithoutABeep) {
    Computer computer;
    computer.choose({mouse});
    computer.hid.attach(mouse);
    AppRig rig(computer);
    rig.launch();
    computer.queue.run();
    computer.statusBar.choose(0);
    computer.queue.run();
    EXPECT_EQ(computer.flag(), "off");
    EXPECT_FALSE(computer.statusBar.hasSlash());
    EXPECT_EQ(computer.statusBar.stateOf(1), MenuItemState::off);
    computer.statusBar.choose(0);
    computer.queue.run();
    EXPECT_EQ(computer.flagWrites(), (Texts{"off", "on", "off", "on"}));
    EXPECT_TRUE(computer.statusBar.hasSlash());
    EXPECT_EQ(computer.preferences.savesOf("isEnabled"), 2U);
    EXPECT_EQ(rig.application.beeps, 0);
}

TEST(JourneyTest, TwoPressesBeforeTheFirstSaveLeaveEverythingAsItWas) {
    Computer computer;
    computer.choose({mouse});
    computer.hid.attach(mouse);
    AppRig rig(computer);
    rig.launch();
    computer.queue.run();
    computer.hotKeys.press();
    computer.hotKeys.press();
    computer.queue.run();
    EXPECT_EQ(rig.application.beeps, 2);
    ASSERT_EQ(computer.preferences.savesOf("isEnabled"), 2U);
    EXPECT_TRUE(std::get<bool>(computer.preferences.stored.at("isEnabled")));
    EXPECT_EQ(computer.flagWrites(), (Texts{"off", "on"}));
    EXPECT_TRUE(computer.statusBar.hasSlash());
}

TEST(JourneyTest, AHotKeyThatAnotherProgramHoldsIsIgnoredSilently) {
    Computer computer;
    computer.hotKeys.takenByAnother = true;
    AppRig rig(computer);
    rig.launch();
    computer.queue.advance(10s);
    EXPECT_EQ(computer.hotKeys.press(), std::nullopt);
    EXPECT_TRUE(computer.log.lines.empty());
    ASSERT_TRUE(computer.statusBar.menu);
    EXPECT_EQ(computer.statusBar.menu->items[1].title, "Shortcut: Ctrl+Opt+T");
    rig.delegate->quit();
    EXPECT_EQ(computer.hotKeys.calls, (Texts{"install", "register", "remove"}));
}

TEST(JourneyTest, ARefusedHotKeyIsOfferedOnlyInTheMenuFromThenOn) {
    constexpr std::size_t hint = 1, settings = 2;
    Computer computer;
    const auto asked = [&] { return std::ranges::count(computer.hotKeys.calls, "request"); };
    {
        AppRig first(computer);
        first.launch();
        computer.hotKeys.change({HotKeyState::Holder::unrequested, ""});
        computer.queue.advance(1h);
        EXPECT_EQ(asked(), 0);  // the user has seen nothing but an icon
        computer.statusBar.choose(settings);
        computer.queue.run();
        computer.windows.draw();
        EXPECT_EQ(asked(), 1);
        computer.hotKeys.change({HotKeyState::Holder::refused, ""});
        computer.queue.run();
        first.delegate->quit();
    }
    computer.queue.restart();
    AppRig second(computer);
    second.launch();
    computer.hotKeys.change({HotKeyState::Holder::unrequested, ""});
    computer.statusBar.choose(settings);
    computer.queue.run();
    computer.windows.draw();
    EXPECT_EQ(asked(), 1);
    computer.statusBar.choose(hint);
    computer.queue.run();
    EXPECT_EQ(asked(), 2);
    computer.hotKeys.change({HotKeyState::Holder::us, "Meta+M"});
    computer.queue.run();
    computer.statusBar.choose(hint);
    computer.queue.run();
    EXPECT_EQ(asked(), 2);
}

TEST(JourneyTest, QuittingFromTheMenuWritesOffThenReleasesTheHotKey) {
    struct HotKeys : FakeHotKeys {
        explicit HotKeys(const Computer& on) : computer(on) {}
        std::unique_ptr<Reference> registerHotKey(const HotKey& hotKey) override {
            struct Watched : Reference {
                Watched(HotKeys& in, std::unique_ptr<Reference> what) : owner(in), reference(std::move(what)) {}
                Watched(const Watched&) = delete;
                Watched& operator=(const Watched&) = delete;
                ~Watched() override { owner.flagWhenLetGo = owner.computer.flag(); }
                HotKeys& owner;
                std::unique_ptr<Reference> reference;
            };
            return std::make_unique<Watched>(*this, FakeHotKeys::registerHotKey(hotKey));
        }
        const Computer& computer;
        std::string flagWhenLetGo;
    };
    Computer computer;
    computer.preferences.stored.emplace("blockMode", std::string("always"));
    HotKeys keys(computer);
    FakeApplication application;
    application.onTerminating = [&] { computer.queue.stop(); };
    const Platform platform{
        application,        computer.queue,     computer.hid,   computer.preferences, computer.files,   computer.log,
        computer.locale,    computer.statusBar, keys,           computer.login,       computer.windows, computer.alerts,
        computer.processes, computer.workspace, computer.bundle};
    AppState state(computer.preferences);
    HelperController helper(computer.files, computer.log);
    GlobalHotkey hotkey(keys);
    const L10n texts(computer.locale.preferredLanguages());
    const auto delegate = AppDelegate::create(platform, state, helper, hotkey, texts);
    application.run(*delegate);
    computer.queue.run();
    EXPECT_EQ(computer.flag(), "on");
    computer.statusBar.choose(7);
    computer.queue.run();
    EXPECT_TRUE(application.terminated);
    EXPECT_EQ(keys.flagWhenLetGo, "off");
    EXPECT_EQ(keys.calls, (Texts{"install", "register", "unregister", "remove"}));
    EXPECT_EQ(keys.press(), std::nullopt);
}

TEST(JourneyTest, LaunchInModeAlwaysMutesBeforeAnyDeviceIsKnown) {
    Computer computer;
    computer.preferences.stored.emplace("blockMode", std::string("always"));
    AppRig rig(computer);
    rig.launch();
    EXPECT_EQ(computer.flagWrites(), Texts{"on"});
}

TEST(JourneyTest, TheFlagLeftByACrashIsRewrittenAtTheNextLaunch) {
    Computer computer;
    computer.files.contents[HelperController::stateFile] = "on";
    AppRig rig(computer);
    rig.launch();
    EXPECT_EQ(computer.flagWrites(), Texts{"off"});
}

TEST(JourneyTest, AMouseIsAttachedDropsOutBrieflyAndIsRemoved) {
    Computer computer;
    computer.choose({mouse});
    AppRig rig(computer);
    rig.launch();
    auto plugged = computer.hid.attach(mouse.interfaces(2));
    computer.queue.advance(1s);
    EXPECT_EQ(computer.flag(), "on");

    computer.hid.detach(plugged);
    computer.queue.advance(1s);
    plugged = computer.hid.attach(mouse.interfaces(2));
    computer.queue.advance(10s);
    EXPECT_EQ(computer.flagWrites(), (Texts{"off", "on"}));

    computer.hid.detach(plugged);
    computer.queue.advance(2s - 1ns);
    EXPECT_EQ(computer.flag(), "on");
    computer.queue.advance(1ns);
    EXPECT_EQ(computer.flagWrites(), (Texts{"off", "on", "off"}));
}

TEST(JourneyTest, AnotherDeviceMutesNothing) {
    Computer computer;
    computer.choose({mouse});
    AppRig rig(computer);
    rig.launch();
    computer.hid.attach(keyboard);
    computer.queue.advance(10s);
    EXPECT_EQ(computer.flagWrites(), Texts{"off"});
}

TEST(JourneyTest, ADisconnectedMouseStaysSelected) {
    Computer computer;
    computer.choose({mouse});
    AppRig rig(computer);
    rig.launch();
    rig.state.selectedIDs.change([](AppState::Selection& selection) { selection.insert(keyboard.key()); });
    computer.queue.run();
    AppRig next(computer);
    EXPECT_EQ(next.state.selectedIDs.get(), (AppState::Selection{mouse.key(), keyboard.key()}));
}

TEST(JourneyTest, TheHotKeyUnmutesAndMutesAgain) {
    Computer computer;
    computer.choose({mouse});
    computer.hid.attach(mouse);
    AppRig rig(computer);
    rig.launch();
    computer.queue.run();
    computer.hotKeys.press();
    computer.queue.run();
    EXPECT_EQ(computer.flag(), "off");
    computer.hotKeys.press();
    computer.queue.run();
    EXPECT_EQ(computer.flagWrites(), (Texts{"off", "on", "off", "on"}));
    EXPECT_EQ(rig.application.beeps, 2);
}

TEST(JourneyTest, AfterQuittingNoQueuedBlockRuns) {
    Computer computer;
    computer.choose({mouse});
    AppRig rig(computer);
    rig.launch();
    computer.queue.run();
    computer.hid.attach(mouse);
    computer.queue.runOneTurn();  // the device is published, but the resulting block is still queued
    rig.delegate->quit();
    computer.queue.advance(10s);
    EXPECT_EQ(computer.flagWrites(), Texts{"off"});
    EXPECT_FALSE(rig.state.blocking.get());
}

TEST(JourneyTest, QuittingWhileMutedLeavesOff) {
    Computer computer;
    computer.choose({mouse});
    computer.hid.attach(mouse);
    AppRig rig(computer);
    rig.launch();
    computer.queue.run();
    EXPECT_EQ(computer.flag(), "on");
    rig.delegate->quit();
    EXPECT_EQ(computer.flag(), "off");
}

TEST(JourneyTest, ChoicesSurviveARestart) {
    Computer computer;
    {
        AppRig rig(computer);
        rig.launch();
        rig.state.selectedIDs.set({mouse.key()});
        rig.state.mode.set(Mode::always);
        rig.state.isEnabled.set(false);
        computer.queue.run();
    }
    const AppRig rig(computer);
    EXPECT_EQ(rig.state.selectedIDs.get(), AppState::Selection{mouse.key()});
    EXPECT_EQ(rig.state.mode.get(), Mode::always);
    EXPECT_FALSE(rig.state.isEnabled.get());
}

TEST(JourneyTest, TheEntryPointRunsTheDelegateOnThePlatformsServices) {
    Computer computer;
    computer.preferences.stored.emplace("blockMode", std::string("always"));
    FakeApplication application;
    const Platform platform = computer.platformFor(application);
    BLE_kovraApp::main(platform);
    EXPECT_EQ(application.policies, std::vector{ActivationPolicy::accessory});
    EXPECT_EQ(computer.flagWrites(), Texts{"on"});
}

}  // namespace
}  // namespace kovra
