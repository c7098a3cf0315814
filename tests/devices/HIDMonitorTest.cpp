#include "BLE_kovra/devices/HIDMonitor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "BLE_kovra/l10n/L10n.h"
#include "tests/fakes/FakeHID.h"
#include "tests/fakes/FakeLocale.h"
#include "tests/fakes/FakeMainQueue.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;
using List = std::vector<HIDDeviceInfo>;

// A started monitor with virtual time, on a HID system that reports every event at once. `published` records the lists.
struct MonitorRig {
    FakeMainQueue queue;
    FakeHID hid{queue};
    FakeLocale locale;
    L10n texts{{"en"}};
    std::shared_ptr<HIDMonitor> monitor = HIDMonitor::create(hid, queue, locale, texts);
    std::vector<List> published;

    MonitorRig() {
        hid.deliverAtOnce();
        record();
        monitor->start();
    }
    void record() {
        monitor->onDevicesChanged = [this](List list) { published.push_back(std::move(list)); };
    }

    List last() const { return published.empty() ? List{} : published.back(); }
    std::vector<std::string> lastNames() const {
        std::vector<std::string> names;
        for (const HIDDeviceInfo& device : last()) names.push_back(device.name);
        return names;
    }
    std::optional<HIDDeviceInfo> find(const std::string& name) const {
        const List list = last();
        const auto found = std::ranges::find(list, name, &HIDDeviceInfo::name);
        return found == list.end() ? std::nullopt : std::optional(*found);
    }
    bool isShownConnected(const std::string& name) const {
        const auto device = find(name);
        return device && device->connected;
    }
    bool wasEverPublishedDisconnected(const std::string& name) const {
        return std::ranges::any_of(published, [&](const List& list) {
            return std::ranges::any_of(
                list, [&](const HIDDeviceInfo& device) { return device.name == name && !device.connected; });
        });
    }
};

using Names = std::vector<std::string>;

TEST(HIDMonitorTest, PublishesNothingAtItsStart) {
    MonitorRig rig;
    rig.queue.run();
    EXPECT_TRUE(rig.published.empty());
}

TEST(HIDMonitorTest, PublishesEachDeviceAlreadyAttachedAtStart) {
    FakeMainQueue queue;
    FakeHID hid(queue);
    hid.attach(aMouse("apple"));
    hid.attach(aMouse("pear").ids(1, 2));
    FakeLocale locale;
    const L10n texts({"en"});
    const auto monitor = HIDMonitor::create(hid, queue, locale, texts);
    std::vector<List> published;
    monitor->onDevicesChanged = [&](List list) { published.push_back(std::move(list)); };
    monitor->start();
    EXPECT_TRUE(published.empty());
    queue.run();
    ASSERT_EQ(published.size(), 2U);
    EXPECT_EQ(published[0].size(), 1U);
    EXPECT_EQ(published[1].size(), 2U);
}

TEST(HIDMonitorTest, PublishesAnAttachedDeviceFromInsideTheEvent) {
    MonitorRig rig;
    rig.hid.attach(aMouse("apple").ids(1, 2));
    EXPECT_EQ(rig.published, (std::vector<List>{{{"apple#1:2", "apple", true}}}));
}

TEST(HIDMonitorTest, FoldsTheInterfacesOfADeviceIntoOneEntry) {
    MonitorRig rig;
    rig.hid.attach(aMouse("apple").interfaces(2));
    EXPECT_EQ(rig.published.size(), 2U);
    EXPECT_EQ(rig.last().size(), 1U);
}

TEST(HIDMonitorTest, ShowsADeviceConnectedWhileOneInterfaceRemains) {
    MonitorRig rig;
    const auto mouse = rig.hid.attach(aMouse("apple").interfaces(2));
    rig.hid.detachInterface(mouse[0]);
    EXPECT_EQ(rig.published.size(), 3U);
    EXPECT_TRUE(rig.isShownConnected("apple"));
    rig.queue.advance(10s);
    EXPECT_EQ(rig.published.size(), 3U);
}

TEST(HIDMonitorTest, PublishesNothingAtTheRemovalOfTheLastInterface) {
    MonitorRig rig;
    const auto mouse = rig.hid.attach(aMouse("apple").interfaces(2));
    rig.hid.detach(mouse);
    EXPECT_EQ(rig.published.size(), 3U);
    rig.queue.advance(2s - 1ns);
    EXPECT_EQ(rig.published.size(), 3U);
    EXPECT_TRUE(rig.isShownConnected("apple"));
}

TEST(HIDMonitorTest, ShowsADeviceDisconnectedTwoSecondsAfterTheLastRemoval) {
    MonitorRig rig;
    rig.hid.detach(rig.hid.attach(aMouse("apple").interfaces(2)));
    rig.queue.advance(2s);
    EXPECT_EQ(rig.published.size(), 4U);
    ASSERT_TRUE(rig.find("apple").has_value());
    EXPECT_FALSE(rig.isShownConnected("apple"));
}

TEST(HIDMonitorTest, NeverShowsAShortDropOut) {
    MonitorRig rig;
    auto mouse = rig.hid.attach(aMouse("apple").interfaces(2));
    rig.hid.detach(mouse);
    rig.queue.advance(1900ms);
    rig.hid.attach(aMouse("apple").interfaces(2));
    rig.queue.advance(5s);
    EXPECT_FALSE(rig.wasEverPublishedDisconnected("apple"));
    EXPECT_TRUE(rig.isShownConnected("apple"));
    EXPECT_EQ(rig.queue.pendingDelayed(), 0U);
}

TEST(HIDMonitorTest, BeginsAFreshGracePeriodAtEachDropOut) {
    MonitorRig rig;
    auto mouse = rig.hid.attach(aMouse("apple"));
    for (int dropOut = 0; dropOut < 5; ++dropOut) {
        rig.hid.detach(mouse);
        rig.queue.advance(1500ms);
        mouse = rig.hid.attach(aMouse("apple"));
    }
    rig.hid.detach(mouse);
    rig.queue.advance(1999ms);
    EXPECT_FALSE(rig.wasEverPublishedDisconnected("apple"));
    rig.queue.advance(1ms);
    EXPECT_FALSE(rig.isShownConnected("apple"));
}

TEST(HIDMonitorTest, ShowsADeviceInGraceAsConnectedWhenAnotherIsAttached) {
    MonitorRig rig;
    rig.hid.detach(rig.hid.attach(aMouse("apple")));
    rig.queue.advance(1s);
    rig.hid.attach(aMouse("pear").ids(1, 2));
    EXPECT_TRUE(rig.isShownConnected("apple"));
    EXPECT_TRUE(rig.monitor->isConnected(aMouse("apple").key()));
    EXPECT_FALSE(rig.monitor->isConnected(aMouse("never seen").key()));
}

TEST(HIDMonitorTest, ReconnectsADeviceThatWasDisconnected) {
    MonitorRig rig;
    rig.hid.detach(rig.hid.attach(aMouse("apple")));
    rig.queue.advance(2s);
    rig.hid.attach(aMouse("apple"));
    EXPECT_TRUE(rig.isShownConnected("apple"));
    EXPECT_EQ(rig.last().size(), 1U);
}

TEST(HIDMonitorTest, KeepsARemovedDeviceInTheList) {
    MonitorRig rig;
    rig.hid.detach(rig.hid.attach(aMouse("apple")));
    rig.queue.advance(24h);
    rig.hid.attach(aMouse("pear").ids(1, 2));
    EXPECT_EQ(rig.lastNames(), (Names{"pear", "apple"}));
}

TEST(HIDMonitorTest, CountsTwoIdenticalMiceAsOne) {
    MonitorRig rig;
    const auto first = rig.hid.attach(aMouse("apple"));
    const auto second = rig.hid.attach(aMouse("apple"));
    EXPECT_EQ(rig.last().size(), 1U);
    rig.hid.detach(first);
    rig.queue.advance(5s);
    EXPECT_TRUE(rig.isShownConnected("apple"));
    rig.hid.detach(second);
    rig.queue.advance(2s);
    EXPECT_FALSE(rig.isShownConnected("apple"));
}

TEST(HIDMonitorTest, DistinguishesDevicesWithOneNameByTheirNumbers) {
    MonitorRig rig;
    rig.hid.attach(aMouse("apple").ids(1, 2));
    rig.hid.attach(aMouse("apple").ids(1, 3));
    EXPECT_EQ(rig.last().size(), 2U);
}

TEST(HIDMonitorTest, NamesANamelessDeviceUnknown) {
    MonitorRig rig;
    rig.hid.attach(aNamelessDevice().ids(std::nullopt, std::nullopt));
    EXPECT_EQ(rig.last(), (List{{"Unknown device#0:0", "Unknown device", true}}));
}

TEST(HIDMonitorTest, IgnoresTheRemovalOfAnInterfaceThatWasNeverAdded) {
    MonitorRig rig;
    rig.hid.attach(aMouse("apple"));
    rig.hid.detachUnknown(4711);
    rig.queue.advance(5s);
    EXPECT_EQ(rig.published.size(), 1U);
    EXPECT_EQ(rig.queue.pendingDelayed(), 0U);
}

TEST(HIDMonitorTest, RemovesAnInterfaceFromTheDeviceOfItsLastAttachment) {
    MonitorRig rig;
    const std::uint64_t number = rig.hid.attachInterface(aMouse("apple"));
    rig.hid.attachAgainAs(number, aMouse("pear"));
    rig.hid.detachInterface(number);
    rig.queue.advance(2s);
    EXPECT_FALSE(rig.isShownConnected("pear"));
}

TEST(HIDMonitorTest, FindsTheSameInterfaceAgainByItsHandleWhereThereIsNoRegistryEntry) {
    MonitorRig rig;
    rig.hid.detach(rig.hid.attach(aMouse("apple").interfaces(2).withoutRegistryEntry()));
    rig.queue.advance(2s);
    EXPECT_FALSE(rig.isShownConnected("apple"));
}

TEST(HIDMonitorTest, ListsConnectedDevicesFirst) {
    MonitorRig rig;
    const auto apple = rig.hid.attach(aMouse("a").ids(1, 1));
    rig.hid.attach(aMouse("b").ids(1, 2));
    rig.hid.detach(apple);
    rig.queue.advance(2s);
    EXPECT_EQ(rig.lastNames(), (Names{"b", "a"}));
}

TEST(HIDMonitorTest, SortsByNameIgnoringCase) {
    MonitorRig rig;
    for (const char* name : {"cherry", "Banana", "apple", "Date"}) rig.hid.attach(aMouse(name));
    EXPECT_EQ(rig.lastNames(), (Names{"apple", "Banana", "cherry", "Date"}));
}

TEST(HIDMonitorTest, SortsEqualNamesByFirstAttachment) {
    MonitorRig rig;
    rig.hid.attach(aMouse("MOUSE").ids(1, 3));
    rig.hid.attach(aMouse("mouse").ids(1, 1));
    rig.hid.attach(aMouse("Mouse").ids(1, 2));
    EXPECT_EQ(rig.lastNames(), (Names{"MOUSE", "mouse", "Mouse"}));
}

// Sorts a hundred devices: with only a few, even an unstable sort may keep their order.
TEST(HIDMonitorTest, SortsManyEqualNamesByFirstAttachment) {
    MonitorRig rig;
    std::vector<std::string> keys;
    std::vector<FakeHID::Plugged> attached;
    for (int product = 100; product > 0; --product) {
        const DeviceDescription mouse = aMouse("apple").ids(1, product);
        attached.push_back(rig.hid.attach(mouse));
        keys.push_back(mouse.key());
    }
    // A device keeps its place among those with the same name when it comes back.
    rig.hid.detach(attached[40]);
    rig.queue.advance(2s);
    rig.hid.attach(aMouse("apple").ids(1, 100 - 40));
    std::vector<std::string> published;
    for (const HIDDeviceInfo& device : rig.last()) published.push_back(device.id);
    EXPECT_EQ(published, keys);
}

TEST(HIDMonitorTest, MakesOneSortKeyPerName) {
    MonitorRig rig;
    for (int i = 0; i < 10; ++i) rig.hid.attach(aMouse("apple").interfaces(2));
    EXPECT_EQ(rig.locale.sortKeysMade, 1);
}

TEST(HIDMonitorTest, WorksWithoutASubscriber) {
    MonitorRig rig;
    rig.monitor->onDevicesChanged = nullptr;
    rig.hid.detach(rig.hid.attach(aMouse("apple")));
    rig.queue.advance(1s);
    rig.record();
    rig.queue.advance(1s);
    EXPECT_EQ(rig.published.size(), 1U);
    EXPECT_FALSE(rig.isShownConnected("apple"));
}

TEST(HIDMonitorTest, IgnoresAGracePeriodThatOutlivesIt) {
    MonitorRig rig;
    rig.hid.detach(rig.hid.attach(aMouse("apple")));
    rig.monitor.reset();
    rig.queue.advance(5s);
    EXPECT_EQ(rig.published.size(), 1U);
}

TEST(HIDMonitorTest, ReceivesNothingAfterItsDestruction) {
    MonitorRig rig;
    rig.monitor.reset();
    rig.hid.attach(aMouse("apple"));
    EXPECT_TRUE(rig.published.empty());
    EXPECT_FALSE(rig.hid.isOpen());
}

}  // namespace
}  // namespace kovra
