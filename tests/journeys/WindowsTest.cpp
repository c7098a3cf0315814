// Tests of the settings window and of the alerts that the menu opens.

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "BLE_kovra/system/DriverActivator.h"
#include "tests/journeys/Mouse.h"
#include "tests/support/AppRig.h"
#include "tests/support/ViewDump.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;
using Texts = std::vector<std::string>;

const std::string briefListing = std::string(DriverActivator::extensionID) + " [activated enabled]\n";

// Positions in the menu.
constexpr std::size_t settings = 2, activateDriver = 4, about = 5, quit = 7;

// A computer with an active driver, on which the application was launched.
struct Desk : Computer, AppRig {
    Desk() : AppRig(static_cast<Computer&>(*this)) {
        processes.outputs[DriverActivator::listingTool] = briefListing;
        launch();
        queue.run();
    }

    void choose(std::size_t entry) {
        statusBar.choose(entry);
        queue.run();
    }
    // Sets or clears the check mark of the device in the settings window.
    void tick(const DeviceDescription& device, bool isOn) {
        std::get<Toggle>(viewAt(windows.shown, {"6", "0", device.key()}).kind).set(isOn);
        queue.run();
    }
    bool windowSays(const std::string& text) const {
        return ViewDump::of(windows.shown).find('"' + text + '"') != std::string::npos;
    }
};

TEST(WindowsTest, TheFirstOpeningCreatesTheWindowAndLaterOnesRaiseIt) {
    Desk desk;
    EXPECT_EQ(desk.windows.calls, Texts{});
    desk.choose(settings);
    EXPECT_EQ(desk.windows.calls, (Texts{"make", "title BLE-kovra", "style mask 7", "content size 440x480",
                                         "kept when closed", "center", "front"}));
    desk.windows.calls.clear();
    desk.choose(settings);
    desk.windows.close();
    desk.choose(settings);
    EXPECT_EQ(desk.windows.calls, (Texts{"front", "front"}));
    EXPECT_EQ(desk.application.activations, 3);
}

TEST(WindowsTest, TheApplicationComesToTheFrontBeforeTheWindow) {
    struct Application : FakeApplication {
        explicit Application(Computer& on) : computer(on) {}
        void activateIgnoringOtherApps() override { computer.windows.calls.emplace_back("application to the front"); }
        Computer& computer;
    };
    Computer computer;
    Application application(computer);
    const Platform platform = computer.platformFor(application);
    AppState state(computer.preferences);
    HelperController helper(computer.files, computer.log);
    GlobalHotkey hotkey(computer.hotKeys);
    const L10n texts({"en"});
    AppDelegate::create(platform, state, helper, hotkey, texts)->openSettings();
    ASSERT_GE(computer.windows.calls.size(), 2U);
    EXPECT_EQ(Texts(computer.windows.calls.end() - 2, computer.windows.calls.end()),
              (Texts{"application to the front", "front"}));
}

TEST(WindowsTest, StartingTheProgramAgainOpensTheSettings) {
    Desk desk;
    desk.delegate->applicationDidReopen();
    EXPECT_TRUE(desk.windows.isVisible);
}

TEST(WindowsTest, TheAdviceIsShownUntilTheWindowIsClosedAndNeverAgain) {
    const std::string advice = "a key without a text";  // so it is its own text
    Computer computer;
    computer.statusBar.adviceKey = advice;
    {
        AppRig rig(computer);
        const auto isShown = [&] { return ViewDump::of(computer.windows.shown).find(advice) != std::string::npos; };
        rig.delegate->openSettings();
        EXPECT_TRUE(isShown());
        rig.state.isEnabled.set(false);
        computer.queue.run();
        rig.delegate->openSettings();  // comes to the front
        computer.queue.run();
        EXPECT_TRUE(isShown());
        computer.windows.close();
        rig.delegate->openSettings();
        EXPECT_FALSE(isShown());
    }
    computer.queue.restart();
    AppRig next(computer);
    next.delegate->openSettings();
    EXPECT_EQ(ViewDump::of(computer.windows.shown).find(advice), std::string::npos);
}

TEST(WindowsTest, WithoutAnAdviceNothingIsSavedAtTheOpening) {
    Desk desk;
    desk.choose(settings);
    EXPECT_TRUE(desk.preferences.saves.empty());
    desk.windows.close();
    desk.statusBar.adviceKey = "a later advice";
    desk.choose(settings);
    EXPECT_TRUE(desk.windowSays("a later advice"));
}

TEST(WindowsTest, AMouseTickedInTheWindowIsSavedAndMutes) {
    Desk desk;
    desk.hid.attach(mouse);
    desk.choose(settings);
    desk.tick(mouse, true);
    EXPECT_EQ(std::get<PreferenceArray>(desk.preferences.stored.at("selectedDeviceIDs")).size(), 1U);
    EXPECT_EQ(desk.flag(), "on");
    EXPECT_TRUE(desk.windowSays("Trackpad muted"));
    desk.tick(mouse, false);
    EXPECT_EQ(desk.flag(), "off");
    EXPECT_TRUE(desk.windowSays("Trackpad active"));
}

TEST(WindowsTest, TheOpenWindowFollowsTheMouseThroughItsGracePeriod) {
    Desk desk;
    desk.choose(settings);
    EXPECT_TRUE(desk.windowSays("No devices found. Connect a mouse."));
    const auto plugged = desk.hid.attach(mouse);
    desk.queue.run();
    EXPECT_TRUE(desk.windowSays("Wireless Mouse"));
    desk.hid.detach(plugged);
    desk.queue.advance(2s - 1ns);
    EXPECT_FALSE(desk.windowSays("disconnected"));
    desk.queue.advance(1ns);
    EXPECT_TRUE(desk.windowSays("disconnected"));
}

TEST(WindowsTest, TheOpenWindowFollowsTheHotKey) {
    Desk desk;
    desk.choose(settings);
    desk.hotKeys.press();
    desk.queue.run();
    EXPECT_FALSE(std::get<Toggle>(viewAt(desk.windows.shown, {"1"}).kind).isOn);
}

TEST(WindowsTest, ChoosingTheSameModeAgainSavesItAndLeavesTheFlagAlone) {
    Desk desk;
    desk.choose(settings);
    const auto saves = desk.preferences.saves.size();
    const auto writes = desk.flagWrites();
    std::get<Picker>(viewAt(desk.windows.shown, {"2"}).kind).select("onDevice");
    desk.queue.run();
    EXPECT_EQ(desk.preferences.saves.size(), saves + 1);
    EXPECT_EQ(desk.flagWrites(), writes);
}

TEST(WindowsTest, TheMenuExplainsTheDriverEvenIfItIsActive) {
    Desk desk;
    desk.files.contents[DriverActivator::managerPath] = "";
    desk.alerts.answer = AlertResponse::firstButton;
    desk.choose(activateDriver);
    ASSERT_EQ(desk.alerts.shown.size(), 1U);
    EXPECT_EQ(desk.alerts.shown[0].messageText, desk.texts.s("driver.title"));
    EXPECT_EQ(desk.processes.ran.size(), 1U);  // at launch
    EXPECT_EQ(desk.processes.started, (std::vector<Command>{{DriverActivator::managerPath, {"forceActivate"}}}));
}

TEST(WindowsTest, TheMenuShowsTheAboutBoxWithTheBundlesVersion) {
    Desk desk;
    desk.bundle.values["CFBundleShortVersionString"] = std::string("3.1");
    desk.alerts.answer = AlertResponse::secondButton;
    desk.choose(about);
    EXPECT_EQ(desk.alerts.shown.at(0).messageText, "BLE-kovra 3.1");
    EXPECT_EQ(desk.workspace.opened, Texts{"mailto:support@ble-kovra.example"});
}

TEST(WindowsTest, QuittingFromTheMenuDuringAnAlertUnmutes) {
    Desk desk;
    desk.state.mode.set(AppState::BlockMode::always);
    desk.queue.run();
    desk.alerts.meanwhile = [&] { desk.choose(quit); };
    desk.choose(about);
    EXPECT_TRUE(desk.application.terminated);
    EXPECT_EQ(desk.flagWrites(), (Texts{"off", "on", "off"}));
}

TEST(WindowsTest, ASecondAlertOpensAboveTheFirst) {
    Desk desk;
    bool isFirst = true;
    desk.alerts.meanwhile = [&] {
        if (std::exchange(isFirst, false)) desk.choose(activateDriver);
    };
    desk.choose(about);
    ASSERT_EQ(desk.alerts.shown.size(), 2U);
    EXPECT_EQ(desk.alerts.shown[1].messageText, desk.texts.s("driver.title"));
}

}  // namespace
}  // namespace kovra
