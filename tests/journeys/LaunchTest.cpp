// Tests of the nine steps of launch, and of events while the last step waits.

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "BLE_kovra/system/DriverActivator.h"
#include "tests/journeys/Mouse.h"
#include "tests/support/AppRig.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;
using Mode = AppState::BlockMode;
using Texts = std::vector<std::string>;

// A computer whose services record the steps of launch. Steps 4 to 6 are not recorded, since they use no service.
struct StepsOfLaunch : Computer {
    using Steps = std::vector<std::string>;

    struct Application : FakeApplication {
        explicit Application(Steps& into) : steps(into) {}
        void setActivationPolicy(ActivationPolicy) override { steps.emplace_back("1 accessory"); }
        Steps& steps;
    };
    struct StatusBar : FakeStatusBar {
        StatusBar(FakeMainQueue& queue, Steps& into) : FakeStatusBar(queue), steps(into) {}
        std::unique_ptr<StatusItem> statusItem(double length) override {
            steps.emplace_back("2 status item");
            return FakeStatusBar::statusItem(length);
        }
        Steps& steps;
    };
    struct HID : FakeHID {
        HID(FakeMainQueue& queue, Steps& into) : FakeHID(queue), steps(into) {}
        std::unique_ptr<HIDManager> createManager() override {
            steps.emplace_back("3 device monitor");
            if (inside) inside();
            return FakeHID::createManager();
        }
        Steps& steps;
        std::function<void()> inside;
    };
    struct HotKeys : FakeHotKeys {
        explicit HotKeys(Steps& into) : steps(into) {}
        std::unique_ptr<Reference> registerHotKey(const HotKey& hotKey) override {
            steps.emplace_back("7 hot key");
            if (inside) inside();
            return FakeHotKeys::registerHotKey(hotKey);
        }
        Steps& steps;
        std::function<void()> inside;
    };
    struct Files : FakeFileSystem {
        explicit Files(Steps& into) : steps(into) {}
        Outcome writeWholeFile(const std::string& path, std::string_view text) override {
            steps.emplace_back("8 first decision");
            return FakeFileSystem::writeWholeFile(path, text);
        }
        Steps& steps;
    };

    struct Processes : FakeProcesses {
        explicit Processes(Steps& into) : steps(into) {}
        std::optional<std::string> output(const Command& command) override {
            steps.push_back("9 " + command.executable + " " + command.arguments.at(0));
            return FakeProcesses::output(command);
        }
        Steps& steps;
    };

    Steps steps;
    Application application{steps};
    StatusBar bar{queue, steps};
    HID devices{queue, steps};
    HotKeys keys{steps};
    Files flagFile{steps};
    Processes programs{steps};
};

// The application on such a computer.
struct Launch {
    void run() { on.application.run(*delegate); }

    StepsOfLaunch on;
    Platform platform{on.application, on.queue,  on.devices,  on.preferences, on.flagFile,
                      on.log,         on.locale, on.bar,      on.keys,        on.login,
                      on.windows,     on.alerts, on.programs, on.workspace,   on.bundle};
    AppState state{on.preferences};
    HelperController helper{on.flagFile, on.log};
    GlobalHotkey hotkey{on.keys};
    L10n texts{on.locale.preferredLanguages()};
    std::shared_ptr<AppDelegate> delegate = AppDelegate::create(platform, state, helper, hotkey, texts);
};

TEST(LaunchTest, RunsItsNineStepsInOrder) {
    Launch launch;
    StepsOfLaunch& on = launch.on;
    on.alerts.onShown = [&] { on.steps.emplace_back("9 explanation"); };
    EXPECT_TRUE(on.steps.empty());
    launch.run();
    EXPECT_EQ(on.steps, (Texts{"1 accessory", "2 status item", "3 device monitor", "7 hot key", "8 first decision",
                               "9 /usr/bin/systemextensionsctl list", "9 explanation"}));
    // Steps 4 to 6 have subscribed to these three properties, so a change of each is saved.
    launch.state.selectedIDs.set({mouse.key()});
    launch.state.isEnabled.set(false);
    launch.state.mode.set(Mode::always);
    on.queue.run();
    EXPECT_EQ(on.preferences.saves.size(), 3U);
}

TEST(LaunchTest, ListensToTheMonitorBeforeItStarts) {
    Launch launch;
    launch.on.devices.attach(mouse);
    launch.on.devices.deliverInsideOpen();
    launch.run();
    launch.on.queue.run();
    EXPECT_EQ(launch.state.devices.get().size(), 1U);
}

TEST(LaunchTest, SubscribesAfterTheMonitorStartsAndBeforeTheHotKeyIsRegistered) {
    Launch launch;
    launch.on.devices.inside = [&] { launch.state.isEnabled.set(false); };
    launch.on.keys.inside = [&] { launch.state.mode.set(Mode::always); };
    launch.run();
    launch.on.queue.run();
    EXPECT_EQ(launch.on.preferences.savesOf("isEnabled"), 0U);
    EXPECT_EQ(launch.on.preferences.savesOf("blockMode"), 1U);
}

const std::string activeListing =
    "*\t*\tG43BCU2T37\t" + std::string(DriverActivator::extensionID) + " (1.8.0/1.8.0)\tdriver\t[activated enabled]\n";

TEST(LaunchTest, AsksTheUserNothingIfTheDriverIsActive) {
    Computer computer;
    computer.processes.outputs[DriverActivator::listingTool] = activeListing;
    AppRig rig(computer);
    rig.launch();
    EXPECT_EQ(computer.processes.ran, (std::vector<Command>{{"/usr/bin/systemextensionsctl", {"list"}}}));
    EXPECT_TRUE(computer.alerts.shown.empty());
    EXPECT_EQ(rig.application.activations, 0);
}

TEST(LaunchTest, ExplainsTheDriverIfItIsNotActive) {
    Computer computer;
    AppRig rig(computer);
    rig.launch();
    ASSERT_EQ(computer.alerts.shown.size(), 1U);
    EXPECT_EQ(computer.alerts.shown[0], (Alert{rig.texts.s("driver.title"),
                                               rig.texts.s("driver.body"),
                                               {rig.texts.s("driver.activate"), rig.texts.s("driver.later")}}));
    EXPECT_EQ(rig.application.activations, 1);
    EXPECT_TRUE(computer.processes.started.empty());
    EXPECT_TRUE(computer.log.lines.empty());
}

TEST(LaunchTest, ExplainsTheDriverAtEachLaunch) {
    Computer computer;
    for (int launches = 1; launches <= 3; ++launches) {
        AppRig rig(computer);
        rig.launch();
        rig.application.terminate();
        computer.queue.restart();
        EXPECT_EQ(computer.alerts.shown.size(), static_cast<std::size_t>(launches));
    }
}

TEST(LaunchTest, AsksNothingIfTheUserHasOpenedTheAlertFromTheMenuWhileTheToolRan) {
    for (const AlertResponse answer : {AlertResponse::firstButton, AlertResponse::secondButton}) {
        Computer computer;
        computer.alerts.answer = answer;
        AppRig rig(computer);
        computer.processes.meanwhile = [&] { rig.delegate->activateDriver(); };
        rig.launch();
        EXPECT_EQ(computer.alerts.shown.size(), 1U);
        rig.delegate->activateDriver();
        EXPECT_EQ(computer.alerts.shown.size(), 2U);
    }
}

TEST(LaunchTest, ExplainsTheDriverIfTheUserHasOpenedAnotherAlertWhileTheToolRan) {
    Computer computer;
    AppRig rig(computer);
    computer.processes.meanwhile = [&] { rig.delegate->showAbout(); };
    rig.launch();
    EXPECT_EQ(computer.alerts.shown.size(), 2U);
}

TEST(LaunchTest, WritesTheFirstDecisionBeforeItExplains) {
    Computer computer;
    computer.preferences.stored.emplace("blockMode", std::string("always"));
    std::string flagMeanwhile;
    computer.processes.meanwhile = [&] { flagMeanwhile = computer.flag(); };
    AppRig rig(computer);
    rig.launch();
    EXPECT_EQ(flagMeanwhile, "on");
}

TEST(LaunchTest, KeepsMutingWhileItsLastStepWaits) {
    Computer computer;
    computer.choose({mouse});
    Texts flags;
    AppRig rig(computer);
    computer.processes.meanwhile = [&] {
        computer.hid.attach(mouse);
        computer.queue.run();
        flags.push_back(computer.flag());
    };
    computer.alerts.meanwhile = [&] {
        computer.hotKeys.press();
        computer.queue.run();
        flags.push_back(computer.flag());
    };
    rig.launch();
    EXPECT_EQ(flags, (Texts{"on", "off"}));
}

TEST(LaunchTest, OpensNoAlertIfTheUserQuitsWhileTheToolRuns) {
    Computer computer;
    computer.preferences.stored.emplace("blockMode", std::string("always"));
    AppRig rig(computer);
    computer.processes.meanwhile = [&] { rig.application.terminate(); };
    rig.launch();
    EXPECT_TRUE(computer.alerts.shown.empty());
    EXPECT_EQ(computer.flagWrites(), (Texts{"on", "off"}));
}

TEST(LaunchTest, StartsNothingIfTheUserQuitsWhileTheAlertIsOpen) {
    Computer computer;
    computer.preferences.stored.emplace("blockMode", std::string("always"));
    AppRig rig(computer);
    computer.alerts.meanwhile = [&] { rig.application.terminate(); };
    rig.launch();
    EXPECT_TRUE(computer.processes.started.empty());
    EXPECT_EQ(computer.flagWrites(), (Texts{"on", "off"}));
}

}  // namespace
}  // namespace kovra
