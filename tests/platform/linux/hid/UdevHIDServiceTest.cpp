#include <gtest/gtest.h>

#include "BLE_kovra/platform/linux/hid/UdevHIDAnnouncer.h"
#include "tests/platform/linux/hid/UdevHIDRig.h"

namespace kovra {
namespace {

using News = std::vector<std::string>;
using std::chrono_literals::operator""ms;
using Clock = std::chrono::steady_clock;

class UdevHIDServiceAtStartTest : public testing::Test {
  protected:
    ~UdevHIDServiceAtStartTest() override { EXPECT_EQ(rig_.log.lines, News()); }

    UdevHIDRig rig_;
    MockHIDBus& bus_ = rig_.bus;
};

class UdevHIDServiceTest : public UdevHIDServiceAtStartTest {
  protected:
    UdevHIDServiceTest() { rig_.open(); }

    // A mouse that has been announced under number 1.
    MockHIDNode announced(MockHIDNode node = {}) {
        node.name = bus_.nextName();
        bus_.plug(node);
        EXPECT_EQ(rig_.news(), News{"+1 " + node.product.value_or("(nameless)")});
        return node;
    }
};

TEST_F(UdevHIDServiceTest, AnnouncesABoundDeviceAtItsFirstEvent) {
    const MockHIDNode node{.name = bus_.nextName()};
    bus_.appear(node);
    bus_.tell(node.name, "add");
    EXPECT_EQ(rig_.news(), News{"+1 apple"});
}

TEST_F(UdevHIDServiceTest, WaitsForADriverToGiveTheName) {
    MockHIDNode node{.name = bus_.nextName(), .product = "Wireless Mouse PID:4023", .driver = std::nullopt};
    bus_.plug(node);
    EXPECT_EQ(rig_.news(), News());
    node.product = "Wireless Mouse M325";
    node.driver = "logitech-hidpp-device";
    bus_.show(node);
    bus_.tell(node.name, "bind");
    EXPECT_EQ(rig_.news(), News{"+1 Wireless Mouse M325"});
    rig_.let(UdevHIDAnnouncer::timeout + 50ms);
    EXPECT_EQ(rig_.news(), News());
}

TEST_F(UdevHIDServiceTest, AnnouncesADeviceThatNoDriverTakesAfterAWhile) {
    const auto plugged = Clock::now();
    bus_.plug({.name = bus_.nextName(), .driver = std::nullopt});
    ASSERT_TRUE(rig_.waitUntil([&] { return !rig_.told.empty(); }));
    EXPECT_GE(Clock::now() - plugged, UdevHIDAnnouncer::timeout);
    EXPECT_EQ(rig_.news(), News{"+1 apple"});
}

TEST_F(UdevHIDServiceTest, NeverAnnouncesAnUnboundDeviceThatSoonGoesAgain) {
    const MockHIDNode node{.name = bus_.nextName(), .driver = std::nullopt};
    bus_.plug(node);
    rig_.settle();
    bus_.unplug(node.name);
    rig_.let(UdevHIDAnnouncer::timeout + 50ms);
    EXPECT_EQ(rig_.news(), News());
}

TEST_F(UdevHIDServiceTest, NeverAnnouncesAnUnboundDeviceThatGoesUnnoticed) {
    const MockHIDNode node{.name = bus_.nextName(), .driver = std::nullopt};
    bus_.plug(node);
    rig_.settle();
    bus_.vanish(node.name);
    rig_.let(UdevHIDAnnouncer::timeout + 50ms);
    EXPECT_EQ(rig_.news(), News());
}

TEST_F(UdevHIDServiceTest, ReportsARenameAsRemovalAndAttachmentOfTheSameInterface) {
    MockHIDNode node = announced();
    node.product = "pear";
    bus_.show(node);
    bus_.tell(node.name, "bind");
    EXPECT_EQ(rig_.news(), (News{"-1 apple", "+1 pear"}));
}

TEST_F(UdevHIDServiceTest, ReadsTheNameAgainAtAnyEvent) {
    MockHIDNode node = announced();
    std::string last = "apple";
    for (const std::string action : {"add", "change", "bind", "unbind", "remove", "move", "online"}) {
        node.product = "after " + action;
        bus_.show(node);
        bus_.tell(node.name, action);
        EXPECT_EQ(rig_.news(), (News{"-1 " + last, "+1 after " + action}));
        last = *node.product;
    }
}

TEST_F(UdevHIDServiceTest, ReportsOtherNumbersAsRemovalAndAttachment) {
    MockHIDNode node = announced();
    node.id = "0003:0000046D:0000C07E";
    bus_.show(node);
    bus_.tell(node.name, "bind");
    EXPECT_EQ(rig_.news(), (News{"-1 apple", "+1 apple"}));
}

TEST_F(UdevHIDServiceTest, BelievesTheNodeAndNotTheEvent) {
    MockHIDNode node{.name = bus_.nextName(), .product = "old"};
    bus_.appear(node);
    bus_.tell(node.name, "add");  // carries the old name
    node.product = "new";
    bus_.show(node);
    EXPECT_EQ(rig_.news(), News{"+1 new"});
}

TEST_F(UdevHIDServiceTest, SaysNothingOfEventsThatChangeNothing) {
    const MockHIDNode node = announced();
    for (int round = 0; round < 3; ++round) {
        for (const char* action : {"add", "change", "bind", "add", "change"}) bus_.tell(node.name, action);
        EXPECT_EQ(rig_.news(), News());
    }
}

TEST_F(UdevHIDServiceTest, SaysNothingOfASwapOfDrivers) {
    MockHIDNode node = announced();
    node.driver = std::nullopt;
    bus_.show(node);
    bus_.tell(node.name, "unbind");
    EXPECT_EQ(rig_.news(), News());
    rig_.let(UdevHIDAnnouncer::timeout + 50ms);
    EXPECT_EQ(rig_.news(), News());
    node.driver = "logitech-hidpp-device";
    bus_.show(node);
    bus_.tell(node.name, "bind");
    EXPECT_EQ(rig_.news(), News());
}

TEST_F(UdevHIDServiceTest, IgnoresASyntheticRemoval) {
    const MockHIDNode node = announced();
    bus_.tell(node.name, "remove");
    EXPECT_EQ(rig_.news(), News());
    bus_.unplug(node.name);
    EXPECT_EQ(rig_.news(), News{"-1 apple"});
}

TEST_F(UdevHIDServiceTest, TellsOfARemovalOnceTheBusHasLetGoOfTheNode) {
    const MockHIDNode node = announced();
    bus_.leaveBus(node.name);  // its own folder is still there
    bus_.tell(node.name, "remove");
    EXPECT_EQ(rig_.news(), News{"-1 apple"});
    bus_.tell(node.name, "remove");
    EXPECT_EQ(rig_.news(), News());
}

TEST_F(UdevHIDServiceTest, TakesADeviceForGoneAfterAWhileWhenItsRemovalIsNeverToldOf) {
    const MockHIDNode node = announced();
    bus_.tell(node.name, "unbind");
    bus_.vanish(node.name);
    EXPECT_EQ(rig_.news(), News());
    EXPECT_TRUE(rig_.waitUntil([&] { return !rig_.told.empty(); }));
    EXPECT_EQ(rig_.news(), News{"-1 apple"});
}

TEST_F(UdevHIDServiceTest, CountsARemovalFromItsOwnEventAndNotFromALateOneOfAnotherKind) {
    const MockHIDNode node = announced();
    bus_.leaveBus(node.name);
    for (const char* action : {"add", "bind", "change", "unbind"}) bus_.tell(node.name, action);
    EXPECT_EQ(rig_.news(), News());
    bus_.tell(node.name, "remove");
    EXPECT_EQ(rig_.news(), News{"-1 apple"});
}

TEST_F(UdevHIDServiceTest, IgnoresALateAdditionOfWhatHasGone) {
    const MockHIDNode node{.name = bus_.nextName()};
    bus_.appear(node);
    bus_.tell(node.name, "add");
    bus_.vanish(node.name);
    EXPECT_EQ(rig_.news(), News());
}

TEST_F(UdevHIDServiceAtStartTest, AnnouncesOnceWhatIsBothFoundAndToldOf) {
    const MockHIDNode found{.name = bus_.nextName(), .product = "found"};
    const MockHIDNode both{.name = bus_.nextName(), .product = "both"};
    bus_.plug(found);
    rig_.open();
    bus_.plug(both);
    EXPECT_EQ(rig_.news(), (News{"+2 both", "+1 found"}));
}

TEST_F(UdevHIDServiceAtStartTest, AnnouncesWhatIsUnboundAtTheStartAfterAWhile) {
    bus_.plug({.name = bus_.nextName(), .driver = std::nullopt});
    const auto opened = Clock::now();
    rig_.open();
    ASSERT_TRUE(rig_.waitUntil([&] { return !rig_.told.empty(); }));
    EXPECT_GE(Clock::now() - opened, UdevHIDAnnouncer::timeout);
    EXPECT_EQ(rig_.news(), News{"+1 apple"});
}

TEST_F(UdevHIDServiceTest, TellsTwoDevicesOfOneNameApart) {
    const MockHIDNode first{.name = bus_.nextName()};
    const MockHIDNode second{.name = bus_.nextName()};
    bus_.plug(first);
    bus_.plug(second);
    EXPECT_EQ(rig_.news(), (News{"+1 apple", "+2 apple"}));
    bus_.unplug(first.name);
    EXPECT_EQ(rig_.news(), News{"-1 apple"});
}

TEST_F(UdevHIDServiceTest, CarriesAnyName) {
    const std::string longName(4096, 'x');
    const std::vector<std::pair<std::optional<std::string>, std::string>> shownAndTold = {
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
    for (const auto& [shown, told] : shownAndTold) {
        bus_.plug({.name = bus_.nextName(), .product = shown});
        EXPECT_EQ(rig_.news(), (News{"+" + std::to_string(++number) + " " + told}));
    }
}

TEST_F(UdevHIDServiceAtStartTest, LooksAtTheNextDeviceOnlyWhenTheLastOneIsDealtWith) {
    for (int i = 0; i < 5; ++i) bus_.plug({.name = bus_.nextName()});
    rig_.onTold = [&] { rig_.loop.async([&] { rig_.told.emplace_back("dealt with"); }); };
    rig_.open();
    for (int i = 0; i < 2; ++i) bus_.plug({.name = bus_.nextName()});
    rig_.settle();
    ASSERT_EQ(rig_.told.size(), 14U);
    for (std::size_t i = 1; i < rig_.told.size(); i += 2) EXPECT_EQ(rig_.told[i], "dealt with");
}

TEST_F(UdevHIDServiceAtStartTest, TellsOfManyDevicesThatAreThereAlready) {
    for (int i = 0; i < 300; ++i) bus_.appear({.name = bus_.nextName()});
    rig_.open();
    ASSERT_TRUE(rig_.waitUntil([&] { return rig_.told.size() >= 300; }));
    EXPECT_EQ(rig_.news().size(), 300U);
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
    EXPECT_LE(turns, 2);  // the timer's own
}

}  // namespace
}  // namespace kovra
