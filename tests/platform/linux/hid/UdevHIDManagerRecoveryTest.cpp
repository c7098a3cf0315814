#include <gtest/gtest.h>
#include <libudev.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <thread>
#include <utility>

#include "BLE_kovra/platform/linux/hid/UdevHIDManager.h"
#include "tests/platform/linux/hid/UdevHIDRig.h"
#include "tests/platform/linux/loop/Turns.h"

// The linker puts __wrap_udev_monitor_receive_device() in place of libudev's function. A test can make it fail with
// ENOBUFS, as after an overflow of the socket. The mock bus cannot simulate this.
bool kovra::nextReceptionOverflows = false;
extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier)
udev_device* __real_udev_monitor_receive_device(udev_monitor* monitor);
udev_device* __wrap_udev_monitor_receive_device(udev_monitor* monitor);
udev_device* __wrap_udev_monitor_receive_device(udev_monitor* monitor) {
    if (!std::exchange(kovra::nextReceptionOverflows, false)) return __real_udev_monitor_receive_device(monitor);
    errno = ENOBUFS;
    return nullptr;
}
// NOLINTEND(bugprone-reserved-identifier)
}

namespace kovra {
namespace {

using Reports = std::vector<std::string>;
using std::chrono_literals::operator""ms;
using std::chrono_literals::operator""s;

// Tests of the manager after missed events. Three devices are announced. Then, without an event, one is removed, one is
// renamed, and a fourth is added.
class UdevHIDManagerRecoveryTest : public testing::Test {
  protected:
    void missEverything(UdevHIDRig& rig) {
        MockHIDNode removed{.name = rig.bus.nextName(), .product = "removed"};
        MockHIDNode renamed{.name = rig.bus.nextName(), .product = "old"};
        MockHIDNode kept{.name = rig.bus.nextName(), .product = "kept"};
        for (const auto& node : {removed, renamed, kept}) rig.bus.plug(node);
        rig.open();
        ASSERT_EQ(rig.newReports(), (Reports{"+1 removed", "+2 old", "+3 kept"}));
        rig.bus.removeNode(removed.name);
        renamed.product = "new";
        rig.bus.updateNode(renamed);
        rig.bus.addNode({.name = rig.bus.nextName(), .product = "added"});
    }
    // A missing node counts as removed only after its event or after a timeout, so its removal is reported last.
    const Reports everythingMissed{"-2 old", "+2 new", "+4 added", "-1 removed"};

    // Waits for this many reports, and returns them with all further ones. On a busy machine the last one takes longer
    // than the timeout.
    static Reports awaitReports(UdevHIDRig& rig, std::size_t count) {
        EXPECT_TRUE(rig.waitUntil([&] { return rig.reports.size() >= count; }));
        return rig.newReports();
    }
    Reports missedReports(UdevHIDRig& rig) const { return awaitReports(rig, everythingMissed.size()); }
};

TEST_F(UdevHIDManagerRecoveryTest, ReportsWhatItMissedWhileTheMachineSlept) {
    UdevHIDRig rig;
    missEverything(rig);
    EXPECT_EQ(rig.newReports(), Reports());
    rig.service.resynchronize();
    EXPECT_EQ(rig.reports, Reports());
    EXPECT_EQ(missedReports(rig), everythingMissed);
    rig.service.resynchronize();
    EXPECT_EQ(rig.newReports(), Reports());
    EXPECT_EQ(rig.log.lines, Reports());
}

TEST_F(UdevHIDManagerRecoveryTest, ReportsWhatItMissedWhileTheProcessWasStopped) {
    UdevHIDRig rig;
    missEverything(rig);
    ASSERT_EQ(::raise(SIGCONT), 0);
    EXPECT_EQ(rig.reports, Reports());
    EXPECT_EQ(missedReports(rig), everythingMissed);
}

TEST_F(UdevHIDManagerRecoveryTest, ReportsWhatItMissedWhenTheSocketOverflowed) {
    UdevHIDRig rig;
    missEverything(rig);
    nextReceptionOverflows = true;
    rig.bus.sendEvent("0003:046D:C077.0003", "change");  // this device has not changed
    EXPECT_EQ(missedReports(rig), everythingMissed);
    EXPECT_FALSE(nextReceptionOverflows);
}

// The kernel removes the mouse, and the manager checks all nodes before the event of the removal arrives. The grace
// period of the mouse must not begin before this event.
TEST_F(UdevHIDManagerRecoveryTest, CountsARemovalFromItsAnnouncementEvenIfAllNodesAreCheckedBefore) {
    UdevHIDRig rig;
    const MockHIDNode mouse{.name = rig.bus.nextName()};
    rig.bus.plug(mouse);
    rig.open();
    ASSERT_EQ(rig.newReports(), Reports{"+1 apple"});
    rig.bus.removeFromBus(mouse.name);
    rig.service.resynchronize();
    EXPECT_EQ(rig.newReports(), Reports());
    rig.bus.sendEvent(mouse.name, "remove");
    EXPECT_EQ(rig.newReports(), Reports{"-1 apple"});
}

TEST_F(UdevHIDManagerRecoveryTest, ReportsEventsThatArriveWhileItChecksAllNodes) {
    UdevHIDRig rig;
    missEverything(rig);
    rig.service.resynchronize();
    rig.service.resynchronize();
    rig.bus.plug({.name = rig.bus.nextName(), .product = "late"});
    const Reports newReports = awaitReports(rig, everythingMissed.size() + 1);
    EXPECT_EQ(newReports.size(), everythingMissed.size() + 1);
    EXPECT_EQ(std::ranges::count(newReports, "+5 late"), 1);
}

TEST_F(UdevHIDManagerRecoveryTest, ReportsWhatItMissedWhenItCouldNotListTheNodes) {
    namespace fs = std::filesystem;
    UdevHIDRig rig;
    rig.open();
    ASSERT_EQ(rig.newReports(), Reports());
    rig.bus.addNode({.name = rig.bus.nextName()});
    const fs::path list = fs::path(std::getenv("UMOCKDEV_DIR")) / "sys/bus/hid/devices";
    const fs::path away = list.string() + ".away";
    fs::rename(list, away);
    writeFile(list, "");
    rig.service.resynchronize();
    EXPECT_EQ(rig.newReports(), Reports());
    fs::remove(list);
    fs::rename(away, list);
    EXPECT_EQ(awaitReports(rig, 1), Reports{"+1 apple"});
    rig.runFor(2 * UdevHIDManager::pollInterval);
    EXPECT_LE(turnsWithin(rig.loop, 2 * UdevHIDManager::pollInterval), 2) << "it goes on listing nodes";
}

TEST_F(UdevHIDManagerRecoveryTest, ResynchronizesWithoutAnOpenManager) {
    UdevHIDRig rig;
    rig.service.resynchronize();
    rig.bus.plug({.name = rig.bus.nextName()});
    rig.manager = rig.service.createManager();
    rig.service.resynchronize();
    EXPECT_EQ(rig.newReports(), Reports());
    rig.open();
    rig.service.resynchronize();
    rig.manager.reset();
    rig.service.resynchronize();
    EXPECT_EQ(rig.newReports(), Reports());
}

// udevd runs, but sends no events. The kernel removes the nodes of the mouse without udevd.
class UdevHIDManagerHangingUdevdTest : public UdevHIDManagerRecoveryTest {
  protected:
    UdevHIDManagerHangingUdevdTest() {
        rig_.addInputNode("event7");
        rig_.bus.plug(mouse_);
        rig_.open();
        EXPECT_EQ(rig_.newReports(), Reports{"+1 apple"});
    }

    Reports nextReports() { return awaitReports(rig_, 1); }
    Reports reportsAfterCheck() {
        rig_.runFor(UdevHIDManager::inputRemovalDelay + UdevHIDAnnouncer::timeout + 50ms);
        return rig_.newReports();
    }

    UdevHIDRig rig_;
    const MockHIDNode mouse_{.name = rig_.bus.nextName()};
};

TEST_F(UdevHIDManagerHangingUdevdTest, ReportsARemoval) {
    rig_.bus.removeNode(mouse_.name);
    rig_.removeInputNode("event7");
    EXPECT_EQ(rig_.newReports(), Reports());
    EXPECT_EQ(nextReports(), Reports{"-1 apple"});
}

TEST_F(UdevHIDManagerHangingUdevdTest, ReportsTheRemovalOfAnInterfaceThatLeavesTheBusLast) {
    rig_.removeInputNode("event7");
    rig_.settle();
    rig_.bus.removeNode(mouse_.name);
    EXPECT_EQ(nextReports(), Reports{"-1 apple"});
}

TEST_F(UdevHIDManagerHangingUdevdTest, ReportsNothingIfTheNodesOfAnotherDeviceAreRemoved) {
    rig_.addInputNode("event8");
    rig_.removeInputNode("event8");
    EXPECT_EQ(reportsAfterCheck(), Reports());
}

TEST_F(UdevHIDManagerHangingUdevdTest, SleepsWhileNodesAreAdded) {
    rig_.settle();
    for (const char* name : {"event8", "event9", "mouse1"}) rig_.addInputNode(name);
    EXPECT_LE(turnsWithin(rig_.loop, 50ms), 2);
}

TEST_F(UdevHIDManagerHangingUdevdTest, WakesOnceForAllNodesThatAreRemovedBeforeTheCheck) {
    for (int i = 10; i < 40; ++i) rig_.addInputNode("event" + std::to_string(i));
    rig_.settle();
    std::thread kernel([&] {
        for (int i = 10; i < 40; ++i) {
            rig_.removeInputNode("event" + std::to_string(i));
            std::this_thread::sleep_for(1ms);
        }
    });
    const int turns = turnsWithin(rig_.loop, UdevHIDManager::inputRemovalDelay / 2);
    kernel.join();
    EXPECT_LE(turns, 4);
}

TEST_F(UdevHIDManagerHangingUdevdTest, ReportsARemovalAfterThoseOfOtherDevices) {
    for (const char* name : {"event8", "event9"}) {
        rig_.addInputNode(name);
        rig_.removeInputNode(name);
        EXPECT_EQ(reportsAfterCheck(), Reports());
    }
    rig_.bus.removeNode(mouse_.name);
    rig_.removeInputNode("event7");
    EXPECT_EQ(nextReports(), Reports{"-1 apple"});
}

TEST_F(UdevHIDManagerHangingUdevdTest, EndsWithAPendingCheck) {
    rig_.removeInputNode("event7");
    rig_.settle();
    rig_.manager.reset();
    EXPECT_EQ(reportsAfterCheck(), Reports());
}

// A machine without udevd whose kernel sends its events to this process.
class UdevHIDManagerKernelEventsTest : public UdevHIDManagerRecoveryTest {
  protected:
    UdevHIDManagerKernelEventsTest() {
        rig_.stopUdevd();
        rig_.reachKernel();
        rig_.open();
        rig_.settle();
    }

    UdevHIDRig rig_;
};

TEST_F(UdevHIDManagerKernelEventsTest, AnnounceAtOnceWithoutALine) {
    const MockHIDNode mouse{.name = rig_.bus.nextName()};
    rig_.bus.plug(mouse);
    EXPECT_EQ(rig_.newReports(), Reports{"+1 apple"});
    rig_.bus.unplug(mouse.name);
    EXPECT_EQ(rig_.newReports(), Reports{"-1 apple"});
    EXPECT_EQ(rig_.log.lines.size(), 0U);
}

TEST_F(UdevHIDManagerKernelEventsTest, ReplacePolling) {
    rig_.bus.addNode({.name = rig_.bus.nextName(), .product = "silent"});
    rig_.runFor(2 * UdevHIDManager::pollInterval);
    EXPECT_EQ(rig_.newReports(), Reports());
}

// The first event after udevd's start makes the manager receive udevd's events, and check all nodes.
TEST_F(UdevHIDManagerKernelEventsTest, MissNothingWhenUdevdStarts) {
    rig_.bus.addNode({.name = rig_.bus.nextName(), .product = "silent"});
    rig_.startUdevd();
    rig_.bus.plug({.name = rig_.bus.nextName(), .product = "announced"});
    ASSERT_TRUE(rig_.waitUntil([&] { return rig_.reports.size() >= 2; }));
    Reports both = rig_.newReports();
    std::ranges::sort(both);
    EXPECT_EQ(both, (Reports{"+1 silent", "+2 announced"}));
    rig_.bus.plug({.name = rig_.bus.nextName(), .product = "next"});
    EXPECT_EQ(rig_.newReports(), Reports{"+3 next"});
}

// A machine without udevd, in a container that the kernel's events do not reach either. The manager polls.
class UdevHIDManagerPollingTest : public UdevHIDManagerRecoveryTest {
  protected:
    UdevHIDManagerPollingTest() { rig_.stopUdevd(); }

    void expectOneLine() {
        ASSERT_EQ(rig_.log.lines.size(), 1U);
        EXPECT_EQ(rig_.log.lines[0],
                  "ble-kovra: udev недоступен, подключение и отключение устройств HID проверяется опросом раз в "
                  "секунду");
    }

    UdevHIDRig rig_;
};

TEST_F(UdevHIDManagerPollingTest, DetectsAllChangesAndLogsOneLine) {
    missEverything(rig_);
    // This takes one poll and one timeout; the rest of the 5 s is a margin for a busy machine.
    ASSERT_TRUE(rig_.waitUntil([&] { return rig_.reports.size() >= everythingMissed.size(); }, 5s));
    EXPECT_EQ(rig_.newReports(), everythingMissed);
    rig_.runFor(2 * UdevHIDManager::pollInterval);
    EXPECT_EQ(rig_.newReports(), Reports());
    expectOneLine();
    EXPECT_EQ(UdevHIDManager::pollInterval, 1s) << "as the line says";
}

TEST_F(UdevHIDManagerPollingTest, IsUsedInASandbox) {
    rig_.startUdevd();
    rig_.enterSandbox();
    missEverything(rig_);
    EXPECT_EQ(missedReports(rig_), everythingMissed);
    expectOneLine();
}

TEST_F(UdevHIDManagerPollingTest, AnnouncesAnUnboundDeviceToo) {
    rig_.bus.addNode({.name = rig_.bus.nextName(), .driver = std::nullopt});
    rig_.open();
    ASSERT_TRUE(rig_.waitUntil([&] { return !rig_.reports.empty(); }));
    EXPECT_EQ(rig_.newReports(), Reports{"+1 apple"});
}

TEST_F(UdevHIDManagerPollingTest, EndsWhenUdevdStarts) {
    rig_.open();
    rig_.startUdevd();
    rig_.runFor(UdevHIDManager::pollInterval + 300ms);
    rig_.bus.addNode({.name = rig_.bus.nextName(), .product = "silent"});
    rig_.runFor(2 * UdevHIDManager::pollInterval);
    EXPECT_EQ(rig_.newReports(), Reports());
    rig_.bus.plug({.name = rig_.bus.nextName(), .product = "announced"});
    EXPECT_EQ(rig_.newReports(), Reports{"+2 announced"});
    expectOneLine();
}

TEST_F(UdevHIDManagerPollingTest, MissesNothingWhenUdevdStarts) {
    rig_.open();
    rig_.settle();
    rig_.bus.addNode({.name = rig_.bus.nextName(), .product = "before"});
    rig_.startUdevd();
    ASSERT_TRUE(rig_.waitUntil([&] { return !rig_.reports.empty(); }));
    EXPECT_EQ(rig_.newReports(), Reports{"+1 before"});
}

TEST_F(UdevHIDManagerPollingTest, KeepsItsRateHoweverOftenItIsResynchronized) {
    rig_.open();
    for (int i = 0; i < 20; ++i) {
        rig_.service.resynchronize();
        rig_.settle();
    }
    int turns = 0;
    bool isOver = false;
    const auto task = rig_.loop.asyncAfter(2500ms, [&] { isOver = true; });
    rig_.loop.runUntil([&] {
        ++turns;
        return isOver;
    });
    EXPECT_LE(turns, 12);  // two or three polls of two turns each, and the turns of the test's own timer
}

TEST_F(UdevHIDManagerPollingTest, EndsWithTheManager) {
    rig_.open();
    rig_.settle();
    rig_.manager.reset();
    rig_.bus.addNode({.name = rig_.bus.nextName()});
    rig_.runFor(UdevHIDManager::pollInterval + 300ms);
    EXPECT_EQ(rig_.newReports(), Reports());
}

}  // namespace
}  // namespace kovra
