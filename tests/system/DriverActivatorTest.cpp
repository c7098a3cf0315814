#include "BLE_kovra/system/DriverActivator.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <vector>

#include "BLE_kovra/l10n/L10n.h"
#include "BLE_kovra/system/DriverSetup.h"
#include "tests/fakes/FakeAlerts.h"
#include "tests/fakes/FakeApplication.h"
#include "tests/fakes/FakeFileSystem.h"
#include "tests/fakes/FakeLog.h"
#include "tests/fakes/FakeProcesses.h"

namespace kovra {
namespace {

using Texts = std::vector<std::string>;
using Commands = std::vector<Command>;

const std::string heading =
    "1 extension(s)\n--- com.apple.system_extension.driver_extension\n"
    "enabled\tactive\tteamID\tbundleID (version)\tname\t[state]\n";
const std::string ours = "G43BCU2T37\torg.pqrs.Karabiner-DriverKit-VirtualHIDDevice (1.8.0/1.8.0)\tdriver\t";
const std::string active = "*\t*\t" + ours + "[activated enabled]\n";

bool lists(const std::string& listing) {
    FakeProcesses processes;
    FakeFileSystem files;
    FakeLog log;
    processes.outputs[DriverActivator::listingTool] = listing;
    return DriverActivator(processes, files, log).isExtensionActive();
}

TEST(DriverActivatorListingTest, IsActiveWhereALineHasTheIdentifierAndBothWords) {
    EXPECT_TRUE(lists(heading + active));
}

TEST(DriverActivatorListingTest, IsNotActiveWhereEitherWordIsMissing) {
    EXPECT_FALSE(lists(heading + "\t\t" + ours + "[activated waiting for user]\n"));
    EXPECT_FALSE(lists(heading + "\t*\t" + ours + "[activated disabled]\n"));
    EXPECT_FALSE(lists(heading + "*\t\t" + ours + "[enabled]\n"));
    EXPECT_FALSE(lists(heading + "\t\t" + ours + "[terminated waiting to uninstall on reboot]\n"));
}

TEST(DriverActivatorListingTest, FindsTheActiveOneBelowATerminatedOne) {
    EXPECT_TRUE(lists(heading + "\t\t" + ours + "[terminated waiting to uninstall on reboot]\n" + active));
}

TEST(DriverActivatorListingTest, IgnoresOtherExtensions) {
    EXPECT_FALSE(lists("*\t*\tABC\torg.example.OtherDriver (1/1)\tdriver\t[activated enabled]\n"));
    EXPECT_FALSE(
        lists("*\t*\tABC\torg.pqrs.karabiner-driverkit-virtualhiddevice (1/1)\tdriver\t[activated enabled]\n"));
}

TEST(DriverActivatorListingTest, NeedsAllThreeInOneLine) {
    EXPECT_FALSE(lists(ours + "\n[activated\nenabled]\n"));
    EXPECT_FALSE(lists("*\t*\tABC\torg.example.Other (1/1)\t[activated enabled]\n\t\t" + ours + "[terminated]\n"));
}

TEST(DriverActivatorListingTest, FindsTheWordsAnywhereInTheLine) {
    EXPECT_TRUE(lists("enabled activated " + std::string(DriverActivator::extensionID)));
    EXPECT_TRUE(lists("reactivated_reenabled see" + std::string(DriverActivator::extensionID) + "2"));
}

TEST(DriverActivatorListingTest, IsCaseSensitive) { EXPECT_FALSE(lists(ours + "[Activated Enabled]\n")); }

TEST(DriverActivatorListingTest, IgnoresBlankLines) {
    EXPECT_TRUE(lists("\n\n\n" + heading + "\n\n" + active + "\n\n"));
}

TEST(DriverActivatorListingTest, NeedsNoLastLineFeed) {
    EXPECT_TRUE(lists(heading + active.substr(0, active.size() - 1)));
}

TEST(DriverActivatorListingTest, IsNotActiveInAnEmptyText) {
    EXPECT_FALSE(lists(""));
    EXPECT_FALSE(lists("\n"));
}

TEST(DriverActivatorListingTest, HasNoLinesWhereItIsNotUtf8) {
    EXPECT_TRUE(lists("Gerät\n" + active));
    EXPECT_FALSE(lists("Ger\xE4t\n" + active));
    EXPECT_FALSE(lists(active + "\xFF"));
}

struct DriverRig {
    void showExplanation() { DriverSetup::showExplanation(application, alerts, driver, texts); }

    FakeProcesses processes;
    FakeFileSystem files;
    FakeLog log;
    FakeApplication application;
    FakeAlerts alerts;
    L10n texts{{"en"}};
    DriverActivator driver{processes, files, log};
};

TEST(DriverActivatorTest, RunsTheListingToolAtEachCall) {
    DriverRig rig;
    rig.processes.outputs[DriverActivator::listingTool] = active;
    EXPECT_TRUE(rig.driver.isExtensionActive());
    rig.processes.outputs[DriverActivator::listingTool] = heading;
    EXPECT_FALSE(rig.driver.isExtensionActive());
    const Command list{"/usr/bin/systemextensionsctl", {"list"}};
    EXPECT_EQ(rig.processes.ran, (Commands{list, list}));
}

TEST(DriverActivatorTest, IsNotActiveIfTheToolCannotBeStarted) {
    DriverRig rig;
    EXPECT_FALSE(rig.driver.isExtensionActive());
    EXPECT_EQ(rig.log.lines, Texts{});
}

TEST(DriverActivatorTest, StartsTheManagerWithAndWithoutForce) {
    DriverRig rig;
    rig.files.contents[DriverActivator::managerPath] = "";
    rig.driver.activate(true);
    rig.driver.activate(false);
    const std::string manager =
        "/Applications/.Karabiner-VirtualHIDDevice-Manager.app/Contents/MacOS/Karabiner-VirtualHIDDevice-Manager";
    EXPECT_EQ(rig.processes.started, (Commands{{manager, {"forceActivate"}}, {manager, {"activate"}}}));
    EXPECT_EQ(rig.log.lines, Texts{});
}

TEST(DriverActivatorTest, LogsOneLineIfTheManagerIsMissing) {
    DriverRig rig;
    rig.driver.activate(true);
    EXPECT_EQ(rig.processes.started, Commands{});
    EXPECT_EQ(rig.log.lines, Texts{"ble-kovra: Manager не найден по пути "
                                   "/Applications/.Karabiner-VirtualHIDDevice-Manager.app/Contents/MacOS/"
                                   "Karabiner-VirtualHIDDevice-Manager"});
}

TEST(DriverActivatorTest, LogsOneLineIfTheManagerDoesNotStart) {
    DriverRig rig;
    rig.files.contents[DriverActivator::managerPath] = "";
    rig.processes.reasonToFail = "Permission %s denied";
    rig.driver.activate(true);
    EXPECT_EQ(rig.log.lines, Texts{"ble-kovra: не удалось запустить активацию драйвера: Permission %s denied"});
}

TEST(DriverSetupTest, HasNoInstances) { EXPECT_FALSE(std::is_default_constructible_v<DriverSetup>); }

TEST(DriverSetupTest, ExplainsInFrontOfEverything) {
    DriverRig rig;
    int activationsBefore = 0;
    rig.alerts.onShown = [&] { activationsBefore = rig.application.activations; };
    rig.showExplanation();
    EXPECT_EQ(activationsBefore, 1);
    EXPECT_EQ(rig.alerts.shown, (std::vector<Alert>{{rig.texts.s("driver.title"),
                                                     rig.texts.s("driver.body"),
                                                     {rig.texts.s("driver.activate"), rig.texts.s("driver.later")}}}));
}

TEST(DriverSetupTest, ItsFirstButtonForcesTheActivationEvenOfAnActiveDriver) {
    DriverRig rig;
    rig.files.contents[DriverActivator::managerPath] = "";
    rig.processes.outputs[DriverActivator::listingTool] = active;
    rig.alerts.answer = AlertResponse::firstButton;
    rig.showExplanation();
    EXPECT_EQ(rig.processes.started, (Commands{{DriverActivator::managerPath, {"forceActivate"}}}));
    EXPECT_EQ(rig.processes.ran, Commands{});
}

TEST(DriverSetupTest, AnyOtherAnswerDoesNothing) {
    for (const AlertResponse answer : {AlertResponse::secondButton, AlertResponse::aborted}) {
        DriverRig rig;
        rig.files.contents[DriverActivator::managerPath] = "";
        rig.alerts.answer = answer;
        rig.showExplanation();
        EXPECT_EQ(rig.processes.started, Commands{});
        EXPECT_EQ(rig.log.lines, Texts{});
    }
}

TEST(DriverSetupTest, LogsOneLineIfTheManagerIsMissing) {
    DriverRig rig;
    rig.alerts.answer = AlertResponse::firstButton;
    rig.showExplanation();
    EXPECT_EQ(rig.log.lines.size(), 1U);
    EXPECT_EQ(rig.alerts.shown.size(), 1U);
}

}  // namespace
}  // namespace kovra
