#include <gtest/gtest.h>

#include "BLE_kovra/platform/linux/hid/UdevHIDAnnouncer.h"
#include "tests/platform/linux/hid/UdevHIDRig.h"

namespace kovra {
namespace {

using Reports = std::vector<std::string>;
using std::chrono_literals::operator""ms;
using Clock = std::chrono::steady_clock;

class UdevHIDServiceAtStartTest : public testing::Test {
  protected:
    ~UdevHIDServiceAtStartTest() override { EXPECT_EQ(rig_.log.lines, Reports()); }

    UdevHIDRig rig_;
    MockHIDBus& bus_ = rig_.bus;
};

class UdevHIDServiceTest : public UdevHIDServiceAtStartTest {
  protected:
    UdevHIDServiceTest() { rig_.open(); }

    MockHIDNode announced(MockHIDNode node = {}) {
        node.name = bus_.nextName();
        bus_.plug(node);
        EXPECT_EQ(rig_.newReports(), Reports{"+1 " + node.product.value_or("(nameless)")});
        return node;
    }
};

TEST_F(UdevHIDServiceTest, AnnouncesABoundDeviceAtItsFirstEvent) {
    const MockHIDNode node{.name = bus_.nextName()};
    bus_.addNode(node);
    bus_.sendEvent(node.name, "add");
    EXPECT_EQ(rig_.newReports(), Reports{"+1 apple"});
}

TEST_F(UdevHIDServiceTest, WaitsForADriverToSetTheName) {
    MockHIDNode node{.name = bus_.nextName(), .product = "Wireless Mouse PID:4023", .driver = std::nullopt};
    bus_.plug(node);
    EXPECT_EQ(rig_.newReports(), Reports());
    node.product = "Wireless Mouse M325";
    node.driver = "logitech-hidpp-device";
    bus_.updateNode(node);
    bus_.sendEvent(node.name, "bind");
    EXPECT_EQ(rig_.newReports(), Reports{"+1 Wireless Mouse M325"});
    rig_.runFor(UdevHIDAnnouncer::timeout + 50ms);
    EXPECT_EQ(rig_.newReports(), Reports());
}

TEST_F(UdevHIDServiceTest, AnnouncesADeviceWithoutADriverAfterTheTimeout) {
    const auto plugged = Clock::now();
    bus_.plug({.name = bus_.nextName(), .driver = std::nullopt});
    ASSERT_TRUE(rig_.waitUntil([&] { return !rig_.reports.empty(); }));
    EXPECT_GE(Clock::now() - plugged, UdevHIDAnnouncer::timeout);
    EXPECT_EQ(rig_.newReports(), Reports{"+1 apple"});
}

TEST_F(UdevHIDServiceTest, NeverAnnouncesAnUnboundDeviceThatIsSoonRemoved) {
    const MockHIDNode node{.name = bus_.nextName(), .driver = std::nullopt};
    bus_.plug(node);
    rig_.settle();
    bus_.unplug(node.name);
    rig_.runFor(UdevHIDAnnouncer::timeout + 50ms);
    EXPECT_EQ(rig_.newReports(), Reports());
}

TEST_F(UdevHIDServiceTest, NeverAnnouncesAnUnboundDeviceThatIsRemovedWithoutAnEvent) {
    const MockHIDNode node{.name = bus_.nextName(), .driver = std::nullopt};
    bus_.plug(node);
    rig_.settle();
    bus_.removeNode(node.name);
    rig_.runFor(UdevHIDAnnouncer::timeout + 50ms);
    EXPECT_EQ(rig_.newReports(), Reports());
}

TEST_F(UdevHIDServiceTest, ReportsARenameAsRemovalAndAttachmentOfTheSameInterface) {
    MockHIDNode node = announced();
    node.product = "pear";
    bus_.updateNode(node);
    bus_.sendEvent(node.name, "bind");
    EXPECT_EQ(rig_.newReports(), (Reports{"-1 apple", "+1 pear"}));
}

TEST_F(UdevHIDServiceTest, ReadsTheNameAgainOnEveryEvent) {
    MockHIDNode node = announced();
    std::string last = "apple";
    for (const std::string action : {"add", "change", "bind", "unbind", "remove", "move", "online"}) {
        node.product = "after " + action;
        bus_.updateNode(node);
        bus_.sendEvent(node.name, action);
        EXPECT_EQ(rig_.newReports(), (Reports{"-1 " + last, "+1 after " + action}));
        last = *node.product;
    }
}

TEST_F(UdevHIDServiceTest, ReportsOtherNumbersAsRemovalAndAttachment) {
    MockHIDNode node = announced();
    node.id = "0003:0000046D:0000C07E";
    bus_.updateNode(node);
    bus_.sendEvent(node.name, "bind");
    EXPECT_EQ(rig_.newReports(), (Reports{"-1 apple", "+1 apple"}));
}

TEST_F(UdevHIDServiceTest, TrustsTheNodeAndNotTheEvent) {
    MockHIDNode node{.name = bus_.nextName(), .product = "old"};
    bus_.addNode(node);
    bus_.sendEvent(node.name, "add");  // the event contains the old name
    node.product = "new";
    bus_.updateNode(node);
    EXPECT_EQ(rig_.newReports(), Reports{"+1 new"});
}

TEST_F(UdevHIDServiceTest, ReportsNothingForEventsThatChangeNothing) {
    const MockHIDNode node = announced();
    for (int round = 0; round < 3; ++round) {
        for (const char* action : {"add", "change", "bind", "add", "change"}) bus_.sendEvent(node.name, action);
        EXPECT_EQ(rig_.newReports(), Reports());
    }
}

TEST_F(UdevHIDServiceTest, ReportsNothingIfTheDriverIsReplaced) {
    MockHIDNode node = announced();
    node.driver = std::nullopt;
    bus_.updateNode(node);
    bus_.sendEvent(node.name, "unbind");
    EXPECT_EQ(rig_.newReports(), Reports());
    rig_.runFor(UdevHIDAnnouncer::timeout + 50ms);
    EXPECT_EQ(rig_.newReports(), Reports());
    node.driver = "logitech-hidpp-device";
    bus_.updateNode(node);
    bus_.sendEvent(node.name, "bind");
    EXPECT_EQ(rig_.newReports(), Reports());
}

TEST_F(UdevHIDServiceTest, IgnoresASyntheticRemoval) {
    const MockHIDNode node = announced();
    bus_.sendEvent(node.name, "remove");
    EXPECT_EQ(rig_.newReports(), Reports());
    bus_.unplug(node.name);
    EXPECT_EQ(rig_.newReports(), Reports{"-1 apple"});
}

TEST_F(UdevHIDServiceTest, ReportsARemovalOnceTheNodeHasLeftTheBus) {
    const MockHIDNode node = announced();
    bus_.removeFromBus(node.name);  // the node's folder still exists
    bus_.sendEvent(node.name, "remove");
    EXPECT_EQ(rig_.newReports(), Reports{"-1 apple"});
    bus_.sendEvent(node.name, "remove");
    EXPECT_EQ(rig_.newReports(), Reports());
}

TEST_F(UdevHIDServiceTest, ReportsARemovalWithoutAnEventAfterTheTimeout) {
    const MockHIDNode node = announced();
    bus_.sendEvent(node.name, "unbind");
    bus_.removeNode(node.name);
    EXPECT_EQ(rig_.newReports(), Reports());
    EXPECT_TRUE(rig_.waitUntil([&] { return !rig_.reports.empty(); }));
    EXPECT_EQ(rig_.newReports(), Reports{"-1 apple"});
}

TEST_F(UdevHIDServiceTest, CountsARemovalFromItsOwnEventAndNotFromALateEventOfAnotherKind) {
    const MockHIDNode node = announced();
    bus_.removeFromBus(node.name);
    for (const char* action : {"add", "bind", "change", "unbind"}) bus_.sendEvent(node.name, action);
    EXPECT_EQ(rig_.newReports(), Reports());
    bus_.sendEvent(node.name, "remove");
    EXPECT_EQ(rig_.newReports(), Reports{"-1 apple"});
}

TEST_F(UdevHIDServiceTest, IgnoresALateAddEventForARemovedNode) {
    const MockHIDNode node{.name = bus_.nextName()};
    bus_.addNode(node);
    bus_.sendEvent(node.name, "add");
    bus_.removeNode(node.name);
    EXPECT_EQ(rig_.newReports(), Reports());
}

TEST_F(UdevHIDServiceAtStartTest, AnnouncesADeviceOnceThatIsBothListedAndReported) {
    const MockHIDNode found{.name = bus_.nextName(), .product = "found"};
    const MockHIDNode both{.name = bus_.nextName(), .product = "both"};
    bus_.plug(found);
    rig_.open();
    bus_.plug(both);
    EXPECT_EQ(rig_.newReports(), (Reports{"+2 both", "+1 found"}));
}

TEST_F(UdevHIDServiceAtStartTest, AnnouncesADeviceThatIsUnboundAtTheStartAfterTheTimeout) {
    bus_.plug({.name = bus_.nextName(), .driver = std::nullopt});
    const auto opened = Clock::now();
    rig_.open();
    ASSERT_TRUE(rig_.waitUntil([&] { return !rig_.reports.empty(); }));
    EXPECT_GE(Clock::now() - opened, UdevHIDAnnouncer::timeout);
    EXPECT_EQ(rig_.newReports(), Reports{"+1 apple"});
}

TEST_F(UdevHIDServiceTest, DistinguishesTwoDevicesOfTheSameName) {
    const MockHIDNode first{.name = bus_.nextName()};
    const MockHIDNode second{.name = bus_.nextName()};
    bus_.plug(first);
    bus_.plug(second);
    EXPECT_EQ(rig_.newReports(), (Reports{"+1 apple", "+2 apple"}));
    bus_.unplug(first.name);
    EXPECT_EQ(rig_.newReports(), Reports{"-1 apple"});
}

TEST_F(UdevHIDServiceTest, ReportsAnyName) {
    const std::string longName(4096, 'x');
    const std::vector<std::pair<std::optional<std::string>, std::string>> shownAndReported = {
        {std::nullopt, "(nameless)"},
        {"", "(nameless)"},
        {"HID 046d:c077", "(nameless)"},
        {"a#1133:49271", "a#1133:49271"},
        {longName, longName},
        {"Maus \xFF\xFE!", "Maus \xEF\xBF\xBD\xEF\xBF\xBD!"},
        {"Мышь", "Мышь"},
        {"a=b=c", "a=b=c"},
        {"  two  blanks  ", "  two  blanks  "}};
    int number = 0;
    for (const auto& [shown, reported] : shownAndReported) {
        bus_.plug({.name = bus_.nextName(), .product = shown});
        EXPECT_EQ(rig_.newReports(), (Reports{"+" + std::to_string(++number) + " " + reported}));
    }
}

TEST_F(UdevHIDServiceAtStartTest, ChecksTheNextDeviceOnlyWhenTheLastOneIsFinished) {
    for (int i = 0; i < 5; ++i) bus_.plug({.name = bus_.nextName()});
    rig_.onReport = [&] { rig_.loop.async([&] { rig_.reports.emplace_back("finished"); }); };
    rig_.open();
    for (int i = 0; i < 2; ++i) bus_.plug({.name = bus_.nextName()});
    rig_.settle();
    ASSERT_EQ(rig_.reports.size(), 14U);
    for (std::size_t i = 1; i < rig_.reports.size(); i += 2) EXPECT_EQ(rig_.reports[i], "finished");
}

TEST_F(UdevHIDServiceAtStartTest, ReportsManyDevicesThatAreAttachedAlready) {
    for (int i = 0; i < 300; ++i) bus_.addNode({.name = bus_.nextName()});
    rig_.open();
    ASSERT_TRUE(rig_.waitUntil([&] { return rig_.reports.size() >= 300; }));
    EXPECT_EQ(rig_.newReports().size(), 300U);
}

TEST_F(UdevHIDServiceTest, SleepsWhileNothingHappens) {
    announced();
    int turns = 0;
    bool isOver = false;
    const auto task = rig_.loop.asyncAfter(1500ms, [&] { isOver = true; });
    rig_.loop.runUntil([&] {
        ++turns;
        return isOver;
    });
    EXPECT_LE(turns, 2);  // the turns of the test's own timer
}

}  // namespace
}  // namespace kovra
