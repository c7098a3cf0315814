#include "BLE_kovra/platform/linux/hid/BluezHIDPresence.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <optional>

#include "BLE_kovra/platform/linux/hid/UdevHIDAnnouncer.h"
#include "tests/platform/linux/bus/Forger.h"
#include "tests/platform/linux/hid/StandInBluez.h"
#include "tests/platform/linux/hid/UdevHIDRig.h"
#include "tests/platform/linux/loop/Turns.h"
#include "tests/support/linux/PrivateBus.h"

namespace kovra {
namespace {

using Reports = std::vector<std::string>;
using std::chrono_literals::operator""ms;
using Clock = std::chrono::steady_clock;

constexpr const char* hci0 = "/org/bluez/hci0";
constexpr const char* hci1 = "/org/bluez/hci1";
constexpr const char* mouseAddress = "D4:F5:13:AA:BB:0C";
constexpr const char* otherAddress = "D4:F5:13:AA:BB:0D";

// A machine with two Bluetooth adapters, and a mouse at the first one. The number of the mouse's HID node is 1.
class BluezHIDPresenceTest : public testing::Test {
  protected:
    void startBluez(bool isConnected) {
        prepareBluez();
        bluez_->addDevice(hci0, mouseAddress, isConnected);
        bluez_->acquireName();
    }
    void prepareBluez() {
        bluez_.emplace(rig_.loop);
        bluez_->addAdapter(hci0, "00:1A:7D:DA:71:0F");
        bluez_->addAdapter(hci1, "00:1A:7D:DA:71:10");
    }
    void setConnected(bool isConnected) { bluez_->setConnected(hci0, mouseAddress, isConnected); }
    void expectReport(const std::string& report) {
        EXPECT_TRUE(rig_.waitUntil([&] { return !rig_.reports.empty(); })) << "not reported: " << report;
        EXPECT_EQ(rig_.newReports(), Reports{report});
    }
    // Waits for the program's second query of BlueZ. The program sends it after its subscription, which is therefore
    // active.
    void waitUntilSubscribed() {
        EXPECT_TRUE(rig_.waitUntil([&] { return bluez_->queries >= 2; }));
    }

    // Waits until the loop makes no turns except those of the test's own timer. Nothing is pending then.
    void waitUntilIdle() {
        for (int tries = 0; tries < 200 && turnsWithin(rig_.loop, 50ms) > 2;) ++tries;
    }

    PrivateBus machine_{"DBUS_SYSTEM_BUS_ADDRESS"};
    UdevHIDRig rig_;
    MockHIDBus& bus_ = rig_.bus;
    const MockHIDNode mouse_{.name = "0005:046D:B012.0001",
                             .id = "0005:0000046D:0000B012",
                             .phys = "00:1a:7d:da:71:0f",
                             .uniq = "d4:f5:13:aa:bb:0c"};
    std::optional<StandInBluez> bluez_;
};

TEST_F(BluezHIDPresenceTest, ReportsThatTheMouseDisconnectedAndReconnectedWhileItsNodeStays) {
    startBluez(true);
    rig_.open();
    bus_.plug(mouse_);
    expectReport("+1 apple");
    waitUntilSubscribed();
    for (int round = 0; round < 3; ++round) {
        setConnected(false);
        expectReport("-1 apple");
        setConnected(true);
        expectReport("+1 apple");
    }
}

TEST_F(BluezHIDPresenceTest, ReportsAMouseThatIsDisconnectedAtTheStartOnlyOnceItConnects) {
    startBluez(false);
    bus_.plug(mouse_);
    rig_.open();
    rig_.runFor(UdevHIDAnnouncer::timeout + 100ms);
    EXPECT_EQ(rig_.newReports(), Reports());
    waitUntilSubscribed();
    setConnected(true);
    expectReport("+1 apple");
}

TEST_F(BluezHIDPresenceTest, IgnoresSignalsThatAnotherClientForges) {
    startBluez(true);
    rig_.open();
    bus_.plug(mouse_);
    expectReport("+1 apple");
    waitUntilSubscribed();
    waitUntilIdle();
    Forger forger(Forger::Bus::system);
    const std::string program = Forger::nameOf(rig_.machine.bus());
    const char* device = "/org/bluez/hci0/dev_D4_F5_13_AA_BB_0C";
    const char* interface = "org.bluez.Device1";
    forger.send(program, device, "org.freedesktop.DBus.Properties", "PropertiesChanged", "sa{sv}as", interface, 1,
                "Connected", "b", 0, 0);
    forger.send(program, "/", "org.freedesktop.DBus.ObjectManager", "InterfacesRemoved", "oas", device, 1, interface);
    forger.send(program, "/", "org.freedesktop.DBus.ObjectManager", "InterfacesAdded", "oa{sa{sv}}", device, 1,
                interface, 1, "Connected", "b", 0);
    setConnected(true);
    waitUntilIdle();
    EXPECT_EQ(rig_.newReports(), Reports());
}

TEST_F(BluezHIDPresenceTest, MissesNoChangeBetweenTheFirstReplyAndTheSubscription) {
    startBluez(true);
    bluez_->onQuery = [this] {
        if (bluez_->queries == 1) rig_.loop.async([this] { setConnected(false); });
    };
    rig_.open();
    bus_.plug(mouse_);
    ASSERT_TRUE(rig_.waitUntil([&] { return rig_.reports.size() >= 2; }));
    EXPECT_EQ(rig_.newReports(), (Reports{"+1 apple", "-1 apple"}));
}

TEST_F(BluezHIDPresenceTest, TreatsTheMouseAsPresentIfBluezIsNotRunning) {
    rig_.open();
    bus_.plug(mouse_);
    const auto plugged = Clock::now();
    expectReport("+1 apple");
    EXPECT_LT(Clock::now() - plugged, UdevHIDAnnouncer::timeout);  // an error reply ends the wait, too
    bus_.unplug(mouse_.name);
    expectReport("-1 apple");
}

TEST_F(BluezHIDPresenceTest, WaitsForAReplyNoLongerThanForADriver) {
    SystemBus silent(rig_.loop);
    ASSERT_GE(sd_bus_request_name(silent.bus(), "org.bluez", 0), 0);
    sd_bus_detach_event(silent.bus());
    rig_.open();
    const auto plugged = Clock::now();
    bus_.plug(mouse_);
    expectReport("+1 apple");
    EXPECT_GE(Clock::now() - plugged, UdevHIDAnnouncer::timeout);
}

TEST_F(BluezHIDPresenceTest, QueriesBluezWheneverItStarts) {
    rig_.open();
    bus_.plug(mouse_);
    expectReport("+1 apple");
    startBluez(false);
    expectReport("-1 apple");
    bluez_.reset();
    startBluez(true);
    expectReport("+1 apple");
    bluez_.reset();
    startBluez(false);
    expectReport("-1 apple");
    setConnected(true);
    expectReport("+1 apple");
}

TEST_F(BluezHIDPresenceTest, KeepsTheLastStateWhenBluezEnds) {
    startBluez(false);
    bus_.plug(mouse_);
    const MockHIDNode second{
        .name = "0005:046D:B013.0002", .product = "pear", .phys = mouse_.phys, .uniq = "d4:f5:13:aa:bb:0d"};
    bluez_->addDevice(hci0, otherAddress, true);
    bus_.plug(second);
    rig_.open();
    expectReport("+2 pear");
    waitUntilSubscribed();
    bluez_.reset();
    rig_.runFor(UdevHIDAnnouncer::timeout + 100ms);
    EXPECT_EQ(rig_.newReports(), Reports());
}

TEST_F(BluezHIDPresenceTest, FollowsADeviceThatBluezLearnsOfLater) {
    prepareBluez();
    bluez_->acquireName();
    rig_.open();
    bus_.plug(mouse_);
    expectReport("+1 apple");
    waitUntilSubscribed();
    bluez_->addDevice(hci0, otherAddress, false);
    waitUntilIdle();
    for (int i = 0; i < 20; ++i) bluez_->setConnected(hci0, otherAddress, i % 2 == 0);
    EXPECT_LE(turnsWithin(rig_.loop, 300ms), 2);  // the turns of the test's own timer
    bluez_->addDevice(hci0, mouseAddress, false);
    expectReport("-1 apple");
    EXPECT_TRUE(rig_.waitUntil([&] { return bluez_->queries >= 4; }));
    setConnected(true);
    expectReport("+1 apple");
}

TEST_F(BluezHIDPresenceTest, TreatsADeviceThatBluezRemovesAsAbsent) {
    startBluez(true);
    rig_.open();
    bus_.plug(mouse_);
    expectReport("+1 apple");
    waitUntilSubscribed();
    bluez_->removeDevice(hci0, mouseAddress);
    expectReport("-1 apple");
    bluez_->addDevice(hci0, mouseAddress, true);
    expectReport("+1 apple");
}

TEST_F(BluezHIDPresenceTest, MatchesTheDeviceOnTheAdapterOfTheNode) {
    prepareBluez();
    bluez_->addDevice(hci1, mouseAddress, false);
    bluez_->addDevice(hci0, otherAddress, false);
    bluez_->acquireName();
    rig_.open();
    bus_.plug(mouse_);
    expectReport("+1 apple");
    waitUntilSubscribed();
    rig_.runFor(100ms);
    EXPECT_EQ(rig_.newReports(), Reports());
}

TEST_F(BluezHIDPresenceTest, ReportsARemovedNodeWhateverBluezSays) {
    startBluez(true);
    rig_.open();
    bus_.plug(mouse_);
    expectReport("+1 apple");
    bus_.unplug(mouse_.name);
    expectReport("-1 apple");
}

TEST_F(BluezHIDPresenceTest, FollowsEveryInterfaceOfADeviceAndOfNoOther) {
    startBluez(true);
    bluez_->addDevice(hci0, otherAddress, true);
    rig_.open();
    bus_.plug(mouse_);
    MockHIDNode second = mouse_;
    second.name = "0005:046D:B012.0002";
    second.product = "apple keys";
    bus_.plug(second);
    bus_.plug({.name = "0005:046D:B013.0003", .product = "pear", .phys = mouse_.phys, .uniq = "d4:f5:13:aa:bb:0d"});
    ASSERT_TRUE(rig_.waitUntil([&] { return rig_.reports.size() >= 3; }));
    static_cast<void>(rig_.newReports());
    waitUntilSubscribed();
    setConnected(false);
    ASSERT_TRUE(rig_.waitUntil([&] { return rig_.reports.size() >= 2; }));
    Reports newReports = rig_.newReports();
    std::ranges::sort(newReports);
    EXPECT_EQ(newReports, (Reports{"-1 apple", "-2 apple keys"}));
}

TEST_F(BluezHIDPresenceTest, QueriesOnlyBluetoothDevices) {
    startBluez(false);
    rig_.open();
    MockHIDNode wired = mouse_;
    wired.name = "0003:046D:C077.0001";
    bus_.plug(wired);
    expectReport("+1 apple");
    rig_.runFor(100ms);
    EXPECT_EQ(bluez_->queries, 0);
}

TEST_F(BluezHIDPresenceTest, IsWokenOnlyByItsOwnDevices) {
    startBluez(true);
    bluez_->addDevice(hci0, otherAddress, true);
    rig_.open();
    bus_.plug(mouse_);
    expectReport("+1 apple");
    waitUntilSubscribed();
    waitUntilIdle();
    const auto turnsWithForeignEvents = [&] {
        for (int i = 0; i < 20; ++i) {
            bluez_->setConnected(hci0, otherAddress, i % 2 == 0);
            bluez_->addDevice(hci0, "11:22:33:44:55:" + std::to_string(10 + i), false);
        }
        return turnsWithin(rig_.loop, 300ms);
    };
    EXPECT_LE(turnsWithForeignEvents(), 2);  // the turns of the test's own timer
    bus_.unplug(mouse_.name);
    expectReport("-1 apple");
    waitUntilIdle();
    setConnected(false);
    EXPECT_LE(turnsWithin(rig_.loop, 300ms), 2);
    EXPECT_EQ(rig_.newReports(), Reports());
}

TEST_F(BluezHIDPresenceTest, QueriesBluezAgainOnceALostConnectionIsThereAgain) {
    startBluez(true);
    rig_.open();
    bus_.plug(mouse_);
    expectReport("+1 apple");
    waitUntilSubscribed();
    bluez_.reset();
    machine_.end();
    waitUntilIdle();
    machine_.restart();
    startBluez(false);
    expectReport("-1 apple");
    waitUntilSubscribed();
    setConnected(true);
    expectReport("+1 apple");
}

TEST_F(BluezHIDPresenceTest, TreatsADeviceWithInvalidPropertiesAsPresent) {
    SystemBus nonsense(rig_.loop);
    const auto answer = [](sd_bus_message* message, void*, sd_bus_error*) {
        if (sd_bus_message_is_method_call(message, nullptr, "GetManagedObjects") <= 0) return 0;
        return sd_bus_reply_method_return(message, "a{oa{sa{sv}}}", 1, "/org/bluez/hci0/dev_D4_F5_13_AA_BB_0C", 1,
                                          "org.bluez.Device1", 3, "Address", "u", 7U, "Adapter", "s", "hci0",
                                          "Connected", "s", "no");
    };
    ASSERT_GE(sd_bus_add_filter(nonsense.bus(), nullptr, answer, nullptr), 0);
    ASSERT_GE(sd_bus_request_name(nonsense.bus(), "org.bluez", 0), 0);
    rig_.open();
    bus_.plug(mouse_);
    expectReport("+1 apple");
}

TEST_F(BluezHIDPresenceTest, IgnoresSignalsWithInvalidValues) {
    startBluez(true);
    rig_.open();
    bus_.plug(mouse_);
    expectReport("+1 apple");
    waitUntilSubscribed();
    bluez_->emitInvalidSignals(hci0, mouseAddress);
    waitUntilIdle();
    EXPECT_EQ(rig_.newReports(), Reports());
    setConnected(false);
    expectReport("-1 apple");
}

TEST(BluezHIDPresenceServiceTest, TreatsTheMouseAsPresentWithoutASystemBus) {
    UdevHIDRig rig;
    rig.open();
    rig.bus.plug({.name = "0005:046D:B012.0001", .phys = "00:1a:7d:da:71:0f", .uniq = "d4:f5:13:aa:bb:0c"});
    EXPECT_EQ(rig.newReports(), Reports{"+1 apple"});
}

// The bus could start org.bluez by its service file. The program must not cause that.
TEST(BluezHIDPresenceServiceTest, StartsNoService) {
    const TempFolder home;
    Environment environment;
    environment.set("XDG_DATA_HOME", home.path().string());
    std::filesystem::create_directories(home.path() / "dbus-1/services");
    writeFile(home.path() / "dbus-1/services/org.bluez.service",
              "[D-BUS Service]\nName=org.bluez\nExec=/bin/sh -c 'touch " + home / "started" + "'\n");
    const PrivateBus machine("DBUS_SYSTEM_BUS_ADDRESS");
    UdevHIDRig rig;
    rig.open();
    rig.bus.plug({.name = "0005:046D:B012.0001", .phys = "00:1a:7d:da:71:0f", .uniq = "d4:f5:13:aa:bb:0c"});
    ASSERT_TRUE(rig.waitUntil([&] { return !rig.reports.empty(); }));
    rig.runFor(200ms);
    EXPECT_EQ(readFile(home / "started"), "missing");
}

}  // namespace
}  // namespace kovra
