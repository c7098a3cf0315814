#include "BLE_kovra/app/AppDelegate.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "tests/support/AppRig.h"

namespace kovra {
namespace {

using Mode = AppState::BlockMode;
using Texts = std::vector<std::string>;

// A launched application with an empty queue.
struct LaunchedRig : Computer, AppRig {
    LaunchedRig() : AppRig(static_cast<Computer&>(*this)) {
        launch();
        queue.run();
    }

    // What the item has shown to a user without a bar.
    const Texts& announced() const { return statusBar.announced; }
};

const DeviceDescription mouse = aMouse("Wireless Mouse").ids(4660, 22136);

TEST(AppDelegateTest, SavesTheStoredValueInsteadOfTheAnnouncedOne) {
    LaunchedRig rig;
    rig.state.isEnabled.set(false);
    rig.state.isEnabled.set(true);
    rig.queue.run();
    ASSERT_EQ(rig.preferences.saves.size(), 2U);
    EXPECT_TRUE(std::get<bool>(rig.preferences.saves[0].value));
    EXPECT_TRUE(std::get<bool>(rig.preferences.saves[1].value));
    EXPECT_EQ(rig.flagWrites(), Texts{"off"});
}

TEST(AppDelegateTest, AnnouncesEveryEvaluationEvenIfUnchanged) {
    LaunchedRig rig;
    std::vector<bool> received;
    const Subscription token =
        rig.state.blocking.subscribe([&](bool value) { received.push_back(value); }, CurrentValue::drop);
    rig.delegate->evaluate();
    rig.delegate->evaluate();
    EXPECT_EQ(received, (std::vector<bool>{false, false}));
}

TEST(AppDelegateTest, KeepsItsDecisionWhenTheFlagCannotBeWritten) {
    LaunchedRig rig;
    rig.files.failAlways("No such file or directory");
    rig.state.mode.set(Mode::always);
    rig.queue.run();
    EXPECT_TRUE(rig.state.blocking.get());
    EXPECT_EQ(rig.log.lines, Texts{"ble-kovra: не удалось записать флаг (on): No such file or directory"});
    rig.delegate->evaluate();
    EXPECT_EQ(rig.log.lines.size(), 2U);
    rig.files.failAlways(std::nullopt);
    rig.delegate->evaluate();
    EXPECT_EQ(rig.flag(), "on");
}

TEST(AppDelegateTest, DecidesAgainOneTurnAfterAResume) {
    LaunchedRig rig;
    int evaluations = 0;
    const Subscription token = rig.state.blocking.subscribe([&](bool) { ++evaluations; }, CurrentValue::drop);
    rig.delegate->applicationDidResume();
    EXPECT_EQ(evaluations, 0);
    rig.queue.runOneTurn();
    EXPECT_EQ(evaluations, 1);
    rig.queue.run();
    EXPECT_EQ(evaluations, 1);
    EXPECT_EQ(rig.flagWrites(), Texts{"off"});  // nothing new to write
    EXPECT_TRUE(rig.preferences.saves.empty());
}

TEST(AppDelegateTest, IgnoresAResumeAfterItsEndOrDestruction) {
    LaunchedRig rig;
    rig.state.mode.set(Mode::always);
    rig.queue.run();
    rig.delegate->applicationDidResume();
    rig.delegate->quit();
    rig.delegate->applicationDidResume();
    rig.queue.run();
    EXPECT_EQ(rig.flagWrites(), (Texts{"off", "on", "off"}));

    LaunchedRig gone;
    int evaluations = 0;
    const Subscription token = gone.state.blocking.subscribe([&](bool) { ++evaluations; }, CurrentValue::drop);
    gone.delegate->applicationDidResume();
    gone.delegate.reset();
    gone.queue.run();
    EXPECT_EQ(evaluations, 0);
}

TEST(AppDelegateTest, TogglesTheSwitchForAnotherProgramAsTheMenuDoes) {
    LaunchedRig rig;
    rig.state.mode.set(Mode::always);
    rig.queue.run();
    rig.application.perform(ApplicationAction::toggle);
    EXPECT_FALSE(rig.state.isEnabled.get());
    EXPECT_EQ(rig.flag(), "on");  // the decision follows on a later turn
    rig.queue.run();
    EXPECT_EQ(rig.flag(), "off");
    EXPECT_EQ(rig.preferences.savesOf("isEnabled"), 1U);
    rig.application.perform(ApplicationAction::toggle);
    rig.queue.run();
    EXPECT_EQ(rig.flag(), "on");
    EXPECT_EQ(rig.application.beeps, 0);
}

TEST(AppDelegateTest, SetsTheSwitchForAnotherProgramHoweverItIs) {
    LaunchedRig rig;
    rig.state.mode.set(Mode::always);
    rig.queue.run();
    for (const auto& [action, word] : {std::pair(ApplicationAction::off, "off"),
                                       {ApplicationAction::off, "off"},
                                       {ApplicationAction::on, "on"},
                                       {ApplicationAction::on, "on"}}) {
        rig.application.perform(action);
        rig.queue.run();
        EXPECT_EQ(rig.flag(), word);
    }
    EXPECT_EQ(rig.flagWrites(), (Texts{"off", "on", "off", "on"}));
}

TEST(AppDelegateTest, OpensItsSettingsForAnotherProgram) {
    LaunchedRig rig;
    rig.application.perform(ApplicationAction::settings);
    rig.queue.run();
    EXPECT_TRUE(rig.windows.isVisible);
    EXPECT_EQ(rig.windows.calls.back(), "front");
}

TEST(AppDelegateTest, QuitsForAnotherProgramAndDoesNothingForItAfterwards) {
    LaunchedRig rig;
    rig.state.mode.set(Mode::always);
    rig.queue.run();
    rig.application.perform(ApplicationAction::quit);
    EXPECT_TRUE(rig.application.terminated);
    EXPECT_EQ(rig.flagWrites(), (Texts{"off", "on", "off"}));
    rig.hotKeys.change({HotKeyState::Holder::refused, ""});
    for (const auto action :
         {ApplicationAction::off, ApplicationAction::settings, ApplicationAction::hotKey, ApplicationAction::toggle})
        rig.delegate->applicationShouldPerform(action);
    EXPECT_EQ(rig.preferences.savesOf("hotKeyRequested"), 0U);
    EXPECT_TRUE(rig.state.isEnabled.get());
    EXPECT_FALSE(rig.windows.isVisible);
}

TEST(AppDelegateTest, RequestsTheHotKeyForAnotherProgram) {
    LaunchedRig rig;
    rig.hotKeys.calls.clear();
    rig.application.perform(ApplicationAction::hotKey);
    EXPECT_EQ(rig.hotKeys.calls, Texts{});  // it has the key
    rig.hotKeys.change({HotKeyState::Holder::refused, ""});
    rig.application.perform(ApplicationAction::hotKey);
    EXPECT_EQ(rig.hotKeys.calls, Texts{"request"});
}

TEST(AppDelegateTest, RequestsTheHotKeyOnceTheUserSeesTheSettings) {
    LaunchedRig rig;
    rig.hotKeys.change({HotKeyState::Holder::unrequested, ""});
    rig.hotKeys.calls.clear();
    rig.application.perform(ApplicationAction::settings);
    rig.queue.run();
    EXPECT_EQ(rig.hotKeys.calls, Texts{});  // the window would come in front of the desktop's dialog
    rig.windows.draw();
    EXPECT_EQ(rig.hotKeys.calls, Texts{"request"});
}

TEST(AppDelegateTest, RequestsNoHotKeyIfItHasQuitBeforeTheUserSeesTheSettings) {
    LaunchedRig rig;
    rig.hotKeys.change({HotKeyState::Holder::unrequested, ""});
    rig.hotKeys.calls.clear();
    rig.application.perform(ApplicationAction::settings);
    rig.application.perform(ApplicationAction::quit);
    rig.windows.draw();
    EXPECT_EQ(std::ranges::count(rig.hotKeys.calls, "request"), 0);
    EXPECT_EQ(rig.preferences.savesOf("hotKeyRequested"), 0U);
}

TEST(AppDelegateTest, TellsTheDesktopWhatTheHotKeyDoesByTheFirstEntryOfItsMenu) {
    for (const char* language : {"en", "de-AT", "uk"}) {
        Computer computer;
        computer.locale.languages = {language};
        AppRig rig(computer);
        rig.launch();
        EXPECT_EQ(computer.hotKeys.description, computer.statusBar.menu->items[0].title) << language;
    }
}

TEST(AppDelegateTest, TogglesTheSwitchThenBeepsAtTheHotKey) {
    LaunchedRig rig;
    std::string order;
    const Subscription token = rig.state.isEnabled.subscribe(
        [&](bool) { order += rig.application.beeps == 0 ? "flip before beep" : "flip after beep"; },
        CurrentValue::drop);
    rig.hotKeys.press();
    EXPECT_TRUE(rig.state.isEnabled.get());
    rig.queue.runOneTurn();
    EXPECT_FALSE(rig.state.isEnabled.get());
    EXPECT_EQ(order, "flip before beep");
    EXPECT_EQ(rig.application.beeps, 1);
    EXPECT_TRUE(rig.preferences.saves.empty());  // the change is saved on a later turn
    rig.queue.run();
    EXPECT_EQ(rig.preferences.savesOf("isEnabled"), 1U);
}

TEST(AppDelegateTest, AnnouncesTheNewStatusAtTheHotKeyAfterTheDecision) {
    LaunchedRig rig;
    rig.state.mode.set(Mode::always);
    rig.queue.run();
    EXPECT_EQ(rig.announced(), Texts{});
    rig.hotKeys.press();
    rig.queue.run();
    EXPECT_EQ(rig.announced(), Texts{"Trackpad active"});
    rig.hotKeys.press();
    rig.queue.run();
    EXPECT_EQ(rig.announced(), (Texts{"Trackpad active", "Trackpad muted"}));
    rig.delegate->toggleEnabled();
    rig.queue.run();
    EXPECT_EQ(rig.announced().size(), 2U);  // the menu announces nothing
}

TEST(AppDelegateTest, AnnouncesTheNewStatusWhenAnotherProgramTogglesTheSwitchAsForAKeyOfItsOwn) {
    LaunchedRig rig;
    rig.state.mode.set(Mode::always);
    rig.queue.run();
    rig.application.perform(ApplicationAction::toggle);
    EXPECT_EQ(rig.announced(), Texts{});
    rig.queue.run();
    EXPECT_EQ(rig.announced(), Texts{"Trackpad active"});
    for (const auto action : {ApplicationAction::on, ApplicationAction::off}) {
        rig.application.perform(action);
        rig.queue.run();
    }
    EXPECT_EQ(rig.announced().size(), 1U);  // these are for scripts
}

TEST(AppDelegateTest, OnlyBeepsAtTheHotKeyAfterItsDestruction) {
    LaunchedRig rig;
    rig.delegate.reset();
    rig.hotKeys.press();
    rig.queue.run();
    EXPECT_EQ(rig.announced(), Texts{});
    EXPECT_EQ(rig.application.beeps, 1);
    EXPECT_TRUE(rig.state.isEnabled.get());
}

TEST(AppDelegateTest, SkipsQueuedWorkAfterItsDestruction) {
    LaunchedRig rig;
    rig.state.mode.set(Mode::always);
    rig.delegate.reset();
    rig.queue.run();
    EXPECT_TRUE(rig.preferences.saves.empty());
    EXPECT_EQ(rig.flagWrites(), Texts{"off"});
}

TEST(AppDelegateTest, DoesNotDecideIfTheWorkDestroyedIt) {
    LaunchedRig rig;
    int evaluations = 0;
    const auto counting = rig.state.blocking.subscribe([&](bool) { ++evaluations; }, CurrentValue::drop);
    const auto ending = rig.state.devices.subscribe([&](const auto&) { rig.delegate.reset(); }, CurrentValue::drop);
    rig.hid.attach(mouse);
    rig.queue.run();
    EXPECT_EQ(rig.state.devices.get().size(), 1U);
    EXPECT_EQ(evaluations, 0);
}

TEST(AppDelegateTest, IsNotKeptAliveByItsHandlers) {
    LaunchedRig rig;
    const std::weak_ptr<AppDelegate> watch = rig.delegate;
    rig.hid.attach(mouse);
    rig.state.mode.set(Mode::always);
    rig.delegate.reset();
    EXPECT_TRUE(watch.expired());
}

TEST(AppDelegateTest, SavesTheChoicesOfItsLastTurnWhenItEnds) {
    LaunchedRig rig;
    rig.state.selectedIDs.set({mouse.key()});
    rig.state.isEnabled.set(false);
    rig.state.isEnabled.set(true);
    rig.state.mode.set(Mode::always);
    rig.application.terminate();
    const AppState next(rig.preferences);
    EXPECT_EQ(next.selectedIDs.get(), AppState::Selection{mouse.key()});
    EXPECT_EQ(rig.preferences.savesOf("isEnabled"), 2U);
    EXPECT_EQ(next.mode.get(), Mode::always);
    EXPECT_EQ(rig.flagWrites(), Texts{"off"}) << "it must not decide any more";
}

TEST(AppDelegateTest, UnmutesBeforeItSavesTheChoicesOfItsLastTurn) {
    struct SlowDisk : FakePreferences {
        void set(std::string_view key, const PreferenceValue& value) override {
            flagAtSave = computer->flag();
            FakePreferences::set(key, value);
        }
        const Computer* computer = nullptr;
        std::string flagAtSave;
    };
    LaunchedRig rig;
    SlowDisk disk;
    disk.computer = &rig;
    AppState state(disk);
    const auto delegate = AppDelegate::create(rig.platform, state, rig.helper, rig.hotkey, rig.texts);
    rig.application.run(*delegate);
    state.mode.set(Mode::always);
    rig.queue.run();
    EXPECT_EQ(rig.flag(), "on");
    state.selectedIDs.set({mouse.key()});
    rig.application.terminate();
    EXPECT_EQ(disk.savesOf("selectedDeviceIDs"), 1U);
    EXPECT_EQ(disk.flagAtSave, "off");
}

TEST(AppDelegateTest, SavesNothingAgainWhenItEnds) {
    LaunchedRig rig;
    rig.state.selectedIDs.set({mouse.key()});
    rig.state.isEnabled.set(false);
    rig.queue.run();
    rig.application.terminate();
    EXPECT_EQ(rig.preferences.saves.size(), 2U);
}

TEST(AppDelegateTest, LeavesOffEvenIfABlockQuits) {
    LaunchedRig rig;
    rig.state.selectedIDs.set({mouse.key()});
    rig.queue.run();
    const auto quitting = rig.state.devices.subscribe([&](const auto&) { rig.delegate->quit(); }, CurrentValue::drop);
    rig.hid.attach(mouse);
    rig.queue.run();
    rig.delegate->evaluate();
    EXPECT_TRUE(rig.application.terminated);
    EXPECT_EQ(rig.flagWrites(), Texts{"off"});
}

}  // namespace
}  // namespace kovra
