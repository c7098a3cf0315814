#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>

#include "BLE_kovra/platform/linux/hid/UdevHIDManager.h"
#include "tests/platform/linux/hid/UdevHIDRig.h"

namespace kovra {
namespace {

using News = std::vector<std::string>;
using std::chrono_literals::operator""ms;
using std::chrono_literals::operator""s;

// Three devices are announced. Then, without an event, one goes, one is renamed, and a fourth comes.
class UdevHIDManagerRecoveryTest : public testing::Test {
  protected:
    void missEverything(UdevHIDRig& rig) {
        MockHIDNode gone{.name = rig.bus.nextName(), .product = "gone"};
        MockHIDNode renamed{.name = rig.bus.nextName(), .product = "old"};
        MockHIDNode stays{.name = rig.bus.nextName(), .product = "stays"};
        for (const auto& node : {gone, renamed, stays}) rig.bus.plug(node);
        rig.open();
        ASSERT_EQ(rig.news(), (News{"+1 gone", "+2 old", "+3 stays"}));
        rig.bus.vanish(gone.name);
        renamed.product = "new";
        rig.bus.show(renamed);
        rig.bus.appear({.name = rig.bus.nextName(), .product = "came"});
    }
    // What has gone is told last: its announcement is waited for, in vain.
    const News everythingMissed{"-2 old", "+2 new", "+4 came", "-1 gone"};

    News newsWithPatience(UdevHIDRig& rig) {
        rig.let(UdevHIDAnnouncer::timeout + 50ms);
        return rig.news();
    }
};

TEST_F(UdevHIDManagerRecoveryTest, TellsWhatItMissedWhenTheMachineSlept) {
    UdevHIDRig rig;
    missEverything(rig);
    EXPECT_EQ(rig.news(), News());
    rig.service.resynchronize();
    EXPECT_EQ(rig.told, News());
    EXPECT_EQ(newsWithPatience(rig), everythingMissed);
    rig.service.resynchronize();
    EXPECT_EQ(rig.news(), News());
    EXPECT_EQ(rig.log.lines, News());
}

TEST_F(UdevHIDManagerRecoveryTest, TellsWhatItMissedWhileTheProcessWasStopped) {
    UdevHIDRig rig;
    missEverything(rig);
    ASSERT_EQ(::raise(SIGCONT), 0);
    EXPECT_EQ(rig.told, News());
    EXPECT_EQ(newsWithPatience(rig), everythingMissed);
}

// As when everything is looked at while the mouse is being unplugged: its grace must not begin before its removal.
TEST_F(UdevHIDManagerRecoveryTest, CountsARemovalFromItsAnnouncementAlsoWhenItLooksAtEverythingBefore) {
    UdevHIDRig rig;
    const MockHIDNode mouse{.name = rig.bus.nextName()};
    rig.bus.plug(mouse);
    rig.open();
    ASSERT_EQ(rig.news(), News{"+1 apple"});
    rig.bus.leaveBus(mouse.name);
    rig.service.resynchronize();
    EXPECT_EQ(rig.news(), News());
    rig.bus.tell(mouse.name, "remove");
    EXPECT_EQ(rig.news(), News{"-1 apple"});
}

TEST_F(UdevHIDManagerRecoveryTest, TellsOfEventsThatComeWhileItLooksAtEverything) {
    UdevHIDRig rig;
    missEverything(rig);
    rig.service.resynchronize();
    rig.service.resynchronize();
    rig.bus.plug({.name = rig.bus.nextName(), .product = "late"});
    const News news = newsWithPatience(rig);
    EXPECT_EQ(news.size(), everythingMissed.size() + 1);
    EXPECT_EQ(std::ranges::count(news, "+5 late"), 1);
}

TEST_F(UdevHIDManagerRecoveryTest, NeedsNoManagerToBeAskedToLookAgain) {
    UdevHIDRig rig;
    rig.service.resynchronize();
    rig.bus.plug({.name = rig.bus.nextName()});
    rig.manager = rig.service.createManager();
    rig.service.resynchronize();
    EXPECT_EQ(rig.news(), News());
    rig.open();
    rig.service.resynchronize();
    rig.manager.reset();
    rig.service.resynchronize();
    EXPECT_EQ(rig.news(), News());
}

// Nobody announces what happens on this machine.
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

TEST_F(UdevHIDManagerPollingTest, NoticesEverythingAllTheSameAndSaysSoOnce) {
    missEverything(rig_);
    ASSERT_TRUE(rig_.waitUntil([&] { return rig_.told.size() >= everythingMissed.size(); }));
    EXPECT_EQ(rig_.news(), everythingMissed);
    rig_.let(2 * UdevHIDManager::pollInterval);
    EXPECT_EQ(rig_.news(), News());
    expectOneLine();
}

TEST_F(UdevHIDManagerPollingTest, IsWhatHappensInASandbox) {
    rig_.startUdevd();
    rig_.enterSandbox();
    missEverything(rig_);
    ASSERT_TRUE(rig_.waitUntil([&] { return rig_.told.size() >= everythingMissed.size(); }));
    EXPECT_EQ(rig_.news(), everythingMissed);
    expectOneLine();
}

TEST_F(UdevHIDManagerPollingTest, AnnouncesAnUnboundDeviceToo) {
    rig_.bus.appear({.name = rig_.bus.nextName(), .driver = std::nullopt});
    rig_.open();
    ASSERT_TRUE(rig_.waitUntil([&] { return !rig_.told.empty(); }));
    EXPECT_EQ(rig_.news(), News{"+1 apple"});
}

TEST_F(UdevHIDManagerPollingTest, EndsWhenUdevdComes) {
    rig_.open();
    rig_.startUdevd();
    rig_.let(UdevHIDManager::pollInterval + 300ms);
    rig_.bus.appear({.name = rig_.bus.nextName(), .product = "silent"});
    rig_.let(2 * UdevHIDManager::pollInterval);
    EXPECT_EQ(rig_.news(), News());
    rig_.bus.plug({.name = rig_.bus.nextName(), .product = "announced"});
    EXPECT_EQ(rig_.news(), News{"+2 announced"});
    expectOneLine();
}

TEST_F(UdevHIDManagerPollingTest, MissesNothingWhenUdevdComes) {
    rig_.open();
    rig_.settle();
    rig_.bus.appear({.name = rig_.bus.nextName(), .product = "before"});
    rig_.startUdevd();
    ASSERT_TRUE(rig_.waitUntil([&] { return !rig_.told.empty(); }));
    EXPECT_EQ(rig_.news(), News{"+1 before"});
}

TEST_F(UdevHIDManagerPollingTest, DoesNotMultiplyWhenAskedToLookAgain) {
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
    EXPECT_LE(turns, 12);  // two or three polls of two turns each, and the timer's own
}

TEST_F(UdevHIDManagerPollingTest, EndsWithTheManager) {
    rig_.open();
    rig_.settle();
    rig_.manager.reset();
    rig_.bus.appear({.name = rig_.bus.nextName()});
    rig_.let(UdevHIDManager::pollInterval + 300ms);
    EXPECT_EQ(rig_.news(), News());
}

}  // namespace
}  // namespace kovra
