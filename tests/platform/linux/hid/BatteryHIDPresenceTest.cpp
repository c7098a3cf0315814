#include "BLE_kovra/platform/linux/hid/BatteryHIDPresence.h"

#include <gtest/gtest.h>

#include "BLE_kovra/platform/linux/hid/UdevHIDManager.h"
#include "tests/platform/linux/hid/UdevHIDRig.h"
#include "tests/platform/linux/loop/Turns.h"

namespace kovra {
namespace {

using Reports = std::vector<std::string>;
using std::chrono_literals::operator""ms;
using std::chrono_literals::operator""s;

const MockBattery on{};
const MockBattery off{.online = "0", .status = "Unknown"};

// A mouse at a receiver, bound to the receiver's driver. The number of its HID node is 1.
class BatteryHIDPresenceTest : public testing::Test {
  protected:
    void plug(const std::optional<MockBattery>& battery) {
        bus_.addNode(mouse_);
        if (battery) bus_.setBattery(mouse_.name, *battery);
        bus_.sendEvent(mouse_.name, "add");
        bus_.sendEvent(mouse_.name, "bind");
    }
    void change(const MockBattery& battery) {
        bus_.setBattery(mouse_.name, battery);
        bus_.sendBatteryEvent(mouse_.name);
    }

    UdevHIDRig rig_;
    MockHIDBus& bus_ = rig_.bus;
    MockHIDNode mouse_{.name = bus_.nextName(), .driver = "logitech-hidpp-device"};
};

TEST_F(BatteryHIDPresenceTest, ReportsThatTheMouseWasSwitchedOffAndOnWhileItsNodeStays) {
    rig_.open();
    plug(on);
    EXPECT_EQ(rig_.newReports(), Reports{"+1 apple"});
    for (int round = 0; round < 3; ++round) {
        change(off);
        EXPECT_EQ(rig_.newReports(), Reports{"-1 apple"});
        change(off);
        EXPECT_EQ(rig_.newReports(), Reports());
        change(on);
        EXPECT_EQ(rig_.newReports(), Reports{"+1 apple"});
        change(on);
        EXPECT_EQ(rig_.newReports(), Reports());
    }
}

TEST_F(BatteryHIDPresenceTest, ReportsAMouseThatIsOffAtTheStartOnlyOnceItIsOn) {
    plug(off);
    rig_.open();
    EXPECT_EQ(rig_.newReports(), Reports());
    rig_.runFor(UdevHIDAnnouncer::timeout + 50ms);
    EXPECT_EQ(rig_.newReports(), Reports());
    change(on);
    EXPECT_EQ(rig_.newReports(), Reports{"+1 apple"});
}

TEST_F(BatteryHIDPresenceTest, TreatsAChargingMouseAsPresent) {
    rig_.open();
    plug(on);
    EXPECT_EQ(rig_.newReports(), Reports{"+1 apple"});
    for (const char* status : {"Charging", "Not charging", "Full"}) {
        change({.online = "0", .status = status});
        EXPECT_EQ(rig_.newReports(), Reports()) << status;
    }
}

TEST_F(BatteryHIDPresenceTest, TreatsAMouseWithoutABatteryAsPresent) {
    rig_.open();
    plug(std::nullopt);
    EXPECT_EQ(rig_.newReports(), Reports{"+1 apple"});
    bus_.setBattery(mouse_.name, on);
    bus_.sendBatteryEvent(mouse_.name, "add");
    EXPECT_EQ(rig_.newReports(), Reports());
    change(off);
    EXPECT_EQ(rig_.newReports(), Reports{"-1 apple"});
}

TEST_F(BatteryHIDPresenceTest, TreatsAMouseWithAnUnclearBatteryAsPresent) {
    rig_.open();
    plug(on);
    const std::vector<MockBattery> unclear = {{.online = std::nullopt, .status = "Unknown"},
                                              {.online = "", .status = "Unknown"},
                                              {.online = "00", .status = "Unknown"},
                                              {.online = "no", .status = "Unknown"},
                                              {.online = "0", .status = std::nullopt},
                                              {.online = "0", .status = ""},
                                              {.online = "0", .status = "Unknown", .scope = "System"},
                                              {.online = "0", .status = "Unknown", .scope = std::nullopt}};
    EXPECT_EQ(rig_.newReports(), Reports{"+1 apple"});
    for (const MockBattery& battery : unclear) {
        change(battery);
        EXPECT_EQ(rig_.newReports(), Reports());
    }
}

TEST_F(BatteryHIDPresenceTest, TreatsAMouseAsPresentIfOneOfItsBatteriesSaysSo) {
    rig_.open();
    plug(off);
    bus_.setBattery(mouse_.name, on, "hidpp_battery_1");
    bus_.sendBatteryEvent(mouse_.name);
    EXPECT_EQ(rig_.newReports(), Reports{"+1 apple"});
}

TEST_F(BatteryHIDPresenceTest, IgnoresTheBatteriesOfOtherDrivers) {
    mouse_.driver = "hid-generic";
    rig_.open();
    plug(off);
    EXPECT_EQ(rig_.newReports(), Reports{"+1 apple"});
    change(off);
    EXPECT_EQ(rig_.newReports(), Reports());
}

TEST_F(BatteryHIDPresenceTest, ReportsARemovedNodeWhateverItsBatterySays) {
    rig_.open();
    plug(on);
    EXPECT_EQ(rig_.newReports(), Reports{"+1 apple"});
    bus_.unplug(mouse_.name);
    EXPECT_EQ(rig_.newReports(), Reports{"-1 apple"});
}

TEST_F(BatteryHIDPresenceTest, FollowsAMouseThatIsPluggedInAgain) {
    rig_.open();
    for (int round = 0; round < 2; ++round) {
        plug(on);
        EXPECT_EQ(rig_.newReports(), Reports{"+1 apple"});
        change(off);
        EXPECT_EQ(rig_.newReports(), Reports{"-1 apple"});
        bus_.unplug(mouse_.name);
        EXPECT_EQ(rig_.newReports(), Reports());
    }
}

TEST_F(BatteryHIDPresenceTest, FollowsAMouseAfterAnotherOneWasUnplugged) {
    rig_.open();
    plug(on);
    EXPECT_EQ(rig_.newReports(), Reports{"+1 apple"});
    const MockHIDNode other{.name = bus_.nextName(), .product = "pear", .driver = mouse_.driver};
    bus_.plug(other);
    EXPECT_EQ(rig_.newReports(), Reports{"+2 pear"});
    bus_.unplug(other.name);
    EXPECT_EQ(rig_.newReports(), Reports{"-2 pear"});
    change(off);
    EXPECT_EQ(rig_.newReports(), Reports{"-1 apple"});
}

TEST_F(BatteryHIDPresenceTest, ReportsOneRemovalOfAMouseThatIsSwitchedOffAndThenUnplugged) {
    rig_.open();
    plug(on);
    EXPECT_EQ(rig_.newReports(), Reports{"+1 apple"});
    change(off);
    EXPECT_EQ(rig_.newReports(), Reports{"-1 apple"});
    bus_.unplug(mouse_.name);
    rig_.runFor(UdevHIDAnnouncer::timeout + 50ms);
    EXPECT_EQ(rig_.newReports(), Reports());
}

TEST_F(BatteryHIDPresenceTest, DetectsAMissedChangeWhenAllNodesAreChecked) {
    rig_.open();
    plug(on);
    EXPECT_EQ(rig_.newReports(), Reports{"+1 apple"});
    bus_.setBattery(mouse_.name, off);
    rig_.service.resynchronize();
    EXPECT_EQ(rig_.newReports(), Reports{"-1 apple"});
}

TEST_F(BatteryHIDPresenceTest, DetectsAChangeWhoseEventWasLost) {
    rig_.open();
    plug(on);
    EXPECT_EQ(rig_.newReports(), Reports{"+1 apple"});
    bus_.setBattery(mouse_.name, off);
    nextReceptionOverflows = true;
    bus_.sendLaptopBatteryEvent();
    EXPECT_EQ(rig_.newReports(), Reports{"-1 apple"});
}

TEST_F(BatteryHIDPresenceTest, DetectsAChangeWithoutUdevd) {
    rig_.stopUdevd();
    plug(on);
    rig_.open();
    EXPECT_EQ(rig_.newReports(), Reports{"+1 apple"});
    bus_.setBattery(mouse_.name, off);
    ASSERT_TRUE(rig_.waitUntil([&] { return !rig_.reports.empty(); }));
    EXPECT_EQ(rig_.newReports(), Reports{"-1 apple"});
}

TEST_F(BatteryHIDPresenceTest, IgnoresOtherPowerSupplies) {
    rig_.open();
    plug(on);
    EXPECT_EQ(rig_.newReports(), Reports{"+1 apple"});
    for (int i = 0; i < 5; ++i) bus_.sendLaptopBatteryEvent();
    EXPECT_EQ(rig_.newReports(), Reports());
    change(off);
    EXPECT_EQ(rig_.newReports(), Reports{"-1 apple"});
}

TEST_F(BatteryHIDPresenceTest, IsNotWokenByPowerSuppliesWithoutSuchAMouse) {
    rig_.open();
    rig_.settle();
    const auto turnsWithForeignEvents = [&] {
        for (int i = 0; i < 5; ++i) bus_.sendLaptopBatteryEvent();
        return turnsWithin(rig_.loop, 300ms);
    };
    EXPECT_LE(turnsWithForeignEvents(), 2);  // the turns of the test's own timer
    plug(on);
    EXPECT_EQ(rig_.newReports(), Reports{"+1 apple"});
    EXPECT_GT(turnsWithForeignEvents(), 2);
    bus_.unplug(mouse_.name);
    EXPECT_EQ(rig_.newReports(), Reports{"-1 apple"});
    EXPECT_LE(turnsWithForeignEvents(), 2);
    plug(on);
    mouse_.driver = "hid-generic";
    bus_.updateNode(mouse_);
    bus_.sendEvent(mouse_.name, "bind");
    EXPECT_EQ(rig_.newReports(), Reports{"+1 apple"});
    EXPECT_LE(turnsWithForeignEvents(), 2);
}

TEST_F(BatteryHIDPresenceTest, SleepsWhileNothingHappens) {
    rig_.open();
    plug(off);
    rig_.settle();
    EXPECT_LE(turnsWithin(rig_.loop, 1s), 2);  // the turns of the test's own timer
}

}  // namespace
}  // namespace kovra
