#include "BLE_kovra/platform/linux/hid/UdevHIDAnnouncer.h"

#include <gtest/gtest.h>

#include "tests/fakes/FakeMainQueue.h"
#include "tests/platform/linux/hid/MockHIDBus.h"
#include "tests/support/linux/NoDescriptors.h"

namespace kovra {
namespace {

using Reports = std::vector<std::string>;
using std::chrono_literals::operator""ms;

// The announcer alone, on a HID bus of its own and with a clock that only the test advances.
class UdevHIDAnnouncerTest : public testing::Test {
  protected:
    MockHIDNode added(MockHIDNode node) {
        node.name = bus_.nextName();
        bus_.addNode(node);
        return node;
    }
    void record(char sign, const HIDDevice& device) {
        reports_.push_back(sign + device.stringProperty("Product").value_or("(nameless)"));
    }
    Reports newReports() { return std::exchange(reports_, {}); }

    MockHIDBus bus_;
    FakeMainQueue queue_;
    Udev udev_{udev_new()};
    Reports reports_;
    std::function<void()> onRemoved_;
    std::unique_ptr<UdevHIDAnnouncer> announcer_ = std::make_unique<UdevHIDAnnouncer>(
        queue_, udev_.get(), std::vector<std::unique_ptr<HIDPresence>>(),
        UdevHIDAnnouncer::Actions{.attached = [this](const UdevHIDDevice& device) { record('+', device); },
                                  .removed =
                                      [this](const UdevHIDDevice& device) {
                                          record('-', device);
                                          if (onRemoved_) onRemoved_();
                                      },
                                  .recheck = {}});
};

TEST_F(UdevHIDAnnouncerTest, WaitsThreeHundredMillisecondsForADriver) {
    const MockHIDNode node = added({.driver = std::nullopt});
    announcer_->check(node.name);
    queue_.advance(299ms);
    EXPECT_EQ(newReports(), Reports());
    queue_.advance(1ms);
    EXPECT_EQ(newReports(), Reports{"+apple"});
    EXPECT_EQ(queue_.pendingDelayed(), 0U);
}

TEST_F(UdevHIDAnnouncerTest, FindsADriverByItselfSoonAfterItIsBound) {
    for (const auto& [boundAfter, foundAfter] :
         {std::pair{1ms, 2ms}, {15ms, 16ms}, {50ms, 64ms}, {170ms, 256ms}, {257ms, 300ms}}) {
        MockHIDNode node = added({.driver = std::nullopt});
        announcer_->check(node.name);
        queue_.advance(boundAfter);
        node.driver = "hid-generic";
        bus_.updateNode(node);
        queue_.advance(foundAfter - boundAfter - 1ms);
        EXPECT_EQ(newReports(), Reports()) << "bound after " << boundAfter.count() << " ms";
        queue_.advance(1ms);
        EXPECT_EQ(newReports(), Reports{"+apple"}) << "bound after " << boundAfter.count() << " ms";
        EXPECT_EQ(queue_.pendingDelayed(), 0U);
    }
}

TEST_F(UdevHIDAnnouncerTest, MeasuresTheTimeoutFromTheFirstCheck) {
    const MockHIDNode node = added({.driver = std::nullopt});
    announcer_->check(node.name);
    queue_.advance(200ms);
    announcer_->check(node.name);
    queue_.advance(100ms);
    EXPECT_EQ(newReports(), Reports{"+apple"});
}

TEST_F(UdevHIDAnnouncerTest, StopsWaitingOnceADriverIsBound) {
    MockHIDNode node = added({.driver = std::nullopt});
    announcer_->check(node.name);
    queue_.advance(100ms);
    node.driver = "hid-generic";
    bus_.updateNode(node);
    announcer_->check(node.name);
    EXPECT_EQ(newReports(), Reports{"+apple"});
    EXPECT_EQ(queue_.pendingDelayed(), 0U);
}

TEST_F(UdevHIDAnnouncerTest, DoesNotWaitForTheDriverOfAnAnnouncedDevice) {
    MockHIDNode node = added({});
    announcer_->check(node.name);
    node.driver = std::nullopt;
    node.product = "pear";
    bus_.updateNode(node);
    announcer_->check(node.name);
    EXPECT_EQ(newReports(), (Reports{"+apple", "-apple", "+pear"}));
    EXPECT_EQ(queue_.pendingDelayed(), 0U);
}

TEST_F(UdevHIDAnnouncerTest, ReadsTheNameAfterTheTimeoutAndNotBefore) {
    MockHIDNode node = added({.driver = std::nullopt});
    announcer_->check(node.name);
    node.product = "pear";
    bus_.updateNode(node);
    queue_.advance(1000ms);
    EXPECT_EQ(newReports(), Reports{"+pear"});
}

TEST_F(UdevHIDAnnouncerTest, WaitsThreeHundredMillisecondsForTheEventOfARemoval) {
    const MockHIDNode node = added({});
    announcer_->check(node.name);
    bus_.removeNode(node.name);
    announcer_->check(node.name);
    queue_.advance(299ms);
    EXPECT_EQ(newReports(), Reports{"+apple"});
    queue_.advance(1ms);
    EXPECT_EQ(newReports(), Reports{"-apple"});
    EXPECT_EQ(queue_.pendingDelayed(), 0U);
}

TEST_F(UdevHIDAnnouncerTest, StopsWaitingForARemovedNode) {
    const MockHIDNode node = added({.driver = std::nullopt});
    announcer_->check(node.name);
    bus_.removeNode(node.name);
    announcer_->check(node.name);
    EXPECT_EQ(queue_.pendingDelayed(), 0U);
    EXPECT_EQ(newReports(), Reports());
}

TEST_F(UdevHIDAnnouncerTest, StopsWaitingWhenItIsDestroyed) {
    const MockHIDNode node = added({.driver = std::nullopt});
    announcer_->check(node.name);
    announcer_.reset();
    EXPECT_EQ(queue_.pendingDelayed(), 0U);
    queue_.advance(1000ms);
    EXPECT_EQ(newReports(), Reports());
}

TEST_F(UdevHIDAnnouncerTest, ReportsNothingMoreIfItIsDestroyedInTheMiddleOfARename) {
    MockHIDNode node = added({});
    announcer_->check(node.name);
    onRemoved_ = [this] { announcer_.reset(); };
    node.product = "pear";
    bus_.updateNode(node);
    announcer_->check(node.name);
    EXPECT_EQ(newReports(), (Reports{"+apple", "-apple"}));
}

TEST_F(UdevHIDAnnouncerTest, ListsExistingPendingAndAnnouncedNodes) {
    const MockHIDNode removed = added({});
    const MockHIDNode pending = added({.driver = std::nullopt});
    announcer_->check(removed.name);
    announcer_->check(pending.name);
    bus_.removeNode(removed.name);
    bus_.removeNode(pending.name);
    const MockHIDNode existing = added({});
    EXPECT_EQ(announcer_->allNodes().names, (Reports{removed.name, pending.name, existing.name}));
}

TEST_F(UdevHIDAnnouncerTest, KeepsANodeThatItCannotReadWithoutDescriptorsAndChecksItAgain) {
    // The first timeout must start before NoDescriptors exists, because a sanitizer opens descriptors when it first
    // checks a type.
    announcer_->check(added({.product = "first", .driver = std::nullopt}).name);
    const MockHIDNode known = added({.product = "known"});
    const MockHIDNode fresh = added({.product = "fresh"});
    announcer_->check(known.name);
    EXPECT_EQ(newReports(), Reports{"+known"});
    {
        const NoDescriptors scope;
        announcer_->check(known.name);
        announcer_->check(fresh.name);
    }
    EXPECT_EQ(newReports(), Reports());
    queue_.advance(UdevHIDAnnouncer::timeout);
    EXPECT_EQ(newReports(), (Reports{"+fresh", "+first"}));
    EXPECT_EQ(queue_.pendingDelayed(), 0U);
}

}  // namespace
}  // namespace kovra
