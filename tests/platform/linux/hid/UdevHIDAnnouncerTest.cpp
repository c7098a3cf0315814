#include "BLE_kovra/platform/linux/hid/UdevHIDAnnouncer.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include "tests/fakes/FakeMainQueue.h"
#include "tests/platform/linux/hid/MockHIDBus.h"

namespace kovra {
namespace {

using News = std::vector<std::string>;
using std::chrono_literals::operator""ms;

// The announcer alone, on a bus of its own and in time that only the test moves.
class UdevHIDAnnouncerTest : public testing::Test {
  protected:
    MockHIDNode appeared(MockHIDNode node) {
        node.name = bus_.nextName();
        bus_.appear(node);
        return node;
    }
    void record(char sign, const HIDDevice& device) {
        told_.push_back(sign + device.stringProperty("Product").value_or("(nameless)"));
    }
    News news() { return std::exchange(told_, {}); }

    MockHIDBus bus_;
    FakeMainQueue queue_;
    Udev udev_{udev_new()};
    News told_;
    std::function<void()> onRemoved_;
    std::unique_ptr<UdevHIDAnnouncer> announcer_ = std::make_unique<UdevHIDAnnouncer>(
        queue_, udev_.get(), std::vector<std::unique_ptr<HIDPresence>>(),
        UdevHIDAnnouncer::Actions{.attached = [this](const UdevHIDDevice& device) { record('+', device); },
                                  .removed =
                                      [this](const UdevHIDDevice& device) {
                                          record('-', device);
                                          if (onRemoved_) onRemoved_();
                                      },
                                  .doubtful = {}});
};

TEST_F(UdevHIDAnnouncerTest, WaitsForADriverThreeHundredMilliseconds) {
    const MockHIDNode node = appeared({.driver = std::nullopt});
    announcer_->look(node.name);
    queue_.advance(299ms);
    EXPECT_EQ(news(), News());
    queue_.advance(1ms);
    EXPECT_EQ(news(), News{"+apple"});
    EXPECT_EQ(queue_.pendingDelayed(), 0U);
}

TEST_F(UdevHIDAnnouncerTest, CountsThemFromTheFirstLook) {
    const MockHIDNode node = appeared({.driver = std::nullopt});
    announcer_->look(node.name);
    queue_.advance(200ms);
    announcer_->look(node.name);
    queue_.advance(100ms);
    EXPECT_EQ(news(), News{"+apple"});
}

TEST_F(UdevHIDAnnouncerTest, WaitsNoLongerOnceThereIsADriver) {
    MockHIDNode node = appeared({.driver = std::nullopt});
    announcer_->look(node.name);
    queue_.advance(100ms);
    node.driver = "hid-generic";
    bus_.show(node);
    announcer_->look(node.name);
    EXPECT_EQ(news(), News{"+apple"});
    EXPECT_EQ(queue_.pendingDelayed(), 0U);
}

TEST_F(UdevHIDAnnouncerTest, WaitsForNothingOnceADeviceIsAnnouncedWhateverItsDriver) {
    MockHIDNode node = appeared({});
    announcer_->look(node.name);
    node.driver = std::nullopt;
    node.product = "pear";
    bus_.show(node);
    announcer_->look(node.name);
    EXPECT_EQ(news(), (News{"+apple", "-apple", "+pear"}));
    EXPECT_EQ(queue_.pendingDelayed(), 0U);
}

TEST_F(UdevHIDAnnouncerTest, ReadsTheNameAfterTheWaitAndNotBefore) {
    MockHIDNode node = appeared({.driver = std::nullopt});
    announcer_->look(node.name);
    node.product = "pear";
    bus_.show(node);
    queue_.advance(1000ms);
    EXPECT_EQ(news(), News{"+pear"});
}

TEST_F(UdevHIDAnnouncerTest, WaitsForNothingThatHasGone) {
    const MockHIDNode node = appeared({.driver = std::nullopt});
    announcer_->look(node.name);
    bus_.vanish(node.name);
    announcer_->look(node.name);
    EXPECT_EQ(queue_.pendingDelayed(), 0U);
    EXPECT_EQ(news(), News());
}

TEST_F(UdevHIDAnnouncerTest, WaitsForNothingOnceItIsDestroyed) {
    const MockHIDNode node = appeared({.driver = std::nullopt});
    announcer_->look(node.name);
    announcer_.reset();
    EXPECT_EQ(queue_.pendingDelayed(), 0U);
    queue_.advance(1000ms);
    EXPECT_EQ(news(), News());
}

TEST_F(UdevHIDAnnouncerTest, IsSilentInTheMiddleOfARenameIfItsOwnerGoes) {
    MockHIDNode node = appeared({});
    announcer_->look(node.name);
    onRemoved_ = [this] { announcer_.reset(); };
    node.product = "pear";
    bus_.show(node);
    announcer_->look(node.name);
    EXPECT_EQ(news(), (News{"+apple", "-apple"}));
}

TEST_F(UdevHIDAnnouncerTest, KnowsWhatIsThereWhatItWaitsForAndWhatItAnnounced) {
    const MockHIDNode gone = appeared({});
    const MockHIDNode awaited = appeared({.driver = std::nullopt});
    announcer_->look(gone.name);
    announcer_->look(awaited.name);
    bus_.vanish(gone.name);
    bus_.vanish(awaited.name);
    const MockHIDNode there = appeared({});
    EXPECT_EQ(announcer_->everything(), (News{gone.name, awaited.name, there.name}));
}

// For as long as it lives, nothing more can be opened.
class NoDescriptors {
  public:
    NoDescriptors() {
        EXPECT_EQ(::getrlimit(RLIMIT_NOFILE, &before_), 0);
        const rlimit none{3, before_.rlim_max};
        EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    }
    ~NoDescriptors() { ::setrlimit(RLIMIT_NOFILE, &before_); }

  private:
    rlimit before_{};
};

TEST_F(UdevHIDAnnouncerTest, KeepsWhatItCannotReadForWantOfDescriptorsAndLooksAgain) {
    // Sets off a wait once beforehand: the sanitizer checks a type when it first meets it, and needs descriptors to.
    announcer_->look(appeared({.product = "first", .driver = std::nullopt}).name);
    const MockHIDNode known = appeared({.product = "known"});
    const MockHIDNode fresh = appeared({.product = "fresh"});
    announcer_->look(known.name);
    EXPECT_EQ(news(), News{"+known"});
    {
        const NoDescriptors scope;
        announcer_->look(known.name);
        announcer_->look(fresh.name);
    }
    EXPECT_EQ(news(), News());
    queue_.advance(UdevHIDAnnouncer::timeout);
    EXPECT_EQ(news(), (News{"+first", "+fresh"}));
    EXPECT_EQ(queue_.pendingDelayed(), 0U);
}

}  // namespace
}  // namespace kovra
