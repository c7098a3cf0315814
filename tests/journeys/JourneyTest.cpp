// The whole application on fakes, from launch to quit, as its user lives it.

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "BLE_kovra/app/BLE_kovraApp.h"
#include "tests/support/AppRig.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;
using Mode = AppState::BlockMode;
using Texts = std::vector<std::string>;

const DeviceDescription mouse = aMouse("Wireless Mouse").ids(4660, 22136);
const DeviceDescription keyboard = aMouse("Keyboard").ids(1, 2);

TEST(Journey, FirstLaunchWithAnEmptyStoreWritesOffAndSavesNothing) {
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

TEST(Journey, AChosenMouseThatIsThereAtLaunchMutesOneTurnAfterItIsPublished) {
    Computer computer;
    computer.choose({mouse});
    computer.hid.attach(mouse);
    AppRig rig(computer);
    rig.launch();
    EXPECT_EQ(computer.flagWrites(), Texts{"off"});
    EXPECT_TRUE(rig.state.devices.get().empty());
    computer.queue.runOneTurn();  // the device's event: published
    EXPECT_EQ(computer.flagWrites(), Texts{"off"});
    computer.queue.runOneTurn();
    EXPECT_EQ(computer.flagWrites(), (Texts{"off", "on"}));
    EXPECT_TRUE(rig.state.blocking.get());
}

TEST(Journey, LaunchInModeAlwaysMutesBeforeAnyDeviceIsKnown) {
    Computer computer;
    computer.preferences.stored.emplace("blockMode", std::string("always"));
    AppRig rig(computer);
    rig.launch();
    EXPECT_EQ(computer.flagWrites(), Texts{"on"});
}

TEST(Journey, TheFlagThatACrashLeftIsRewrittenAtTheNextLaunch) {
    Computer computer;
    computer.files.contents[HelperController::standardStateFile] = "on";
    AppRig rig(computer);
    rig.launch();
    EXPECT_EQ(computer.flagWrites(), Texts{"off"});
}

TEST(Journey, TheMouseComesGoesForAMomentAndGoesForGood) {
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

TEST(Journey, AnotherDeviceMutesNothing) {
    Computer computer;
    computer.choose({mouse});
    AppRig rig(computer);
    rig.launch();
    computer.hid.attach(keyboard);
    computer.queue.advance(10s);
    EXPECT_EQ(computer.flagWrites(), Texts{"off"});
}

TEST(Journey, AChosenMouseThatIsAwayStaysChosen) {
    Computer computer;
    computer.choose({mouse});
    AppRig rig(computer);
    rig.launch();
    rig.state.selectedIDs.change([](AppState::Selection& selection) { selection.insert(keyboard.key()); });
    computer.queue.run();
    AppRig next(computer);
    EXPECT_EQ(next.state.selectedIDs.get(), (AppState::Selection{mouse.key(), keyboard.key()}));
}

TEST(Journey, TheHotKeyGivesThePadBackAndTakesItAgain) {
    Computer computer;
    computer.choose({mouse});
    computer.hid.attach(mouse);
    AppRig rig(computer);
    rig.launch();
    computer.queue.run();
    const auto press = rig.delegate->hotKeyHandler();
    press();
    computer.queue.run();
    EXPECT_EQ(computer.flag(), "off");
    press();
    computer.queue.run();
    EXPECT_EQ(computer.flagWrites(), (Texts{"off", "on", "off", "on"}));
    EXPECT_EQ(rig.application.beeps, 2);
}

TEST(Journey, QuittingGivesThePadBackAndNothingQueuedRunsAnyMore) {
    Computer computer;
    computer.choose({mouse});
    AppRig rig(computer);
    rig.launch();
    computer.queue.run();
    computer.hid.attach(mouse);
    computer.queue.runOneTurn();  // published, its block still queued
    rig.delegate->quit();
    computer.queue.advance(10s);
    EXPECT_EQ(computer.flagWrites(), Texts{"off"});
    EXPECT_FALSE(rig.state.blocking.get());
}

TEST(Journey, QuittingWhileMutedLeavesOff) {
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

TEST(Journey, ChoicesSurviveARestart) {
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

TEST(Journey, TheEntryPointRunsTheDelegateOnThePlatformsServices) {
    Computer computer;
    computer.preferences.stored.emplace("blockMode", std::string("always"));
    FakeApplication application;
    const Platform platform{application,  computer.queue,  computer.hid,       computer.preferences, computer.files,
                            computer.log, computer.locale, computer.statusBar, computer.hotKeys,     computer.login};
    BLE_kovraApp::main(platform);
    EXPECT_EQ(application.policies, std::vector{ActivationPolicy::accessory});
    EXPECT_EQ(computer.flagWrites(), Texts{"on"});
}

}  // namespace
}  // namespace kovra
