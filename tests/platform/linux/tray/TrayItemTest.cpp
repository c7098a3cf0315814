#include "BLE_kovra/platform/linux/tray/TrayItem.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "BLE_kovra/platform/linux/tray/TrayStatusBar.h"
#include "tests/fakes/FakeMainQueue.h"

namespace kovra {
namespace {

Drawing picture(const std::string& name) { return {.name = name, .size = {18, 18}, .strokes = {}}; }

MenuItem entry(const std::string& title, std::function<void()> perform = [] {}) {
    MenuItem item;
    item.title = title;
    item.action = MenuAction{title, std::move(perform)};
    return item;
}

MenuItem mark(const std::string& title, int tag, MenuItemState state, std::function<void()> perform = [] {}) {
    MenuItem item = entry(title, std::move(perform));
    item.tag = tag;
    item.state = state;
    return item;
}

// A front that records each call as text: what has changed, as in "image plain template tip away menu 2 0 on; ".
class Recorder : public TrayFront {
  public:
    explicit Recorder(std::string& record) : record_(record) {}
    void show(const TrayContents& contents, const TrayChanges& changes) override {
        if (changes.image) record_ += "image " + (contents.image ? contents.image->name : "none");
        if (changes.image && contents.imageIsTemplate) record_ += " template";
        if (changes.toolTip) record_ += " tip " + contents.toolTip;
        if (changes.menu) record_ += " menu " + std::to_string(contents.menu.items.size());
        for (const std::size_t position : changes.states) {
            record_ += " " + std::to_string(position);
            record_ += contents.menu.items.at(position).state == MenuItemState::on ? " on" : " off";
        }
        record_ += "; ";
    }

  private:
    std::string& record_;
};

struct TrayRig {
    FakeMainQueue queue;
    std::string record;
    std::unique_ptr<TrayItem> item = std::make_unique<TrayItem>(queue);

    TrayRig() { item->add(std::make_unique<Recorder>(record)); }

    StatusBarButton& button() { return *item->button(); }
    void setMenu(std::vector<MenuItem> items) { item->setMenu({std::move(items)}); }
    std::string takeRecord() {
        queue.run();
        return std::exchange(record, {});
    }
};

TEST(TrayItemTest, ShowsEverythingAsSoonAsItHasAMenu) {
    TrayRig rig;
    rig.button().setImage(picture("plain"));
    rig.button().setImageIsTemplate(true);
    rig.button().setToolTip("away");
    EXPECT_EQ(rig.record, "");
    rig.setMenu({entry("one"), entry("two")});
    EXPECT_EQ(rig.takeRecord(), "image plain template tip away menu 2; ");
}

TEST(TrayItemTest, ShowsTheFirstMenuAtOnceAndLaterOnesFromTheQueue) {
    TrayRig rig;
    rig.setMenu({entry("one")});
    EXPECT_EQ(std::exchange(rig.record, {}), "image none tip  menu 1; ");
    rig.setMenu({entry("two")});
    EXPECT_EQ(rig.record, "");
    EXPECT_EQ(rig.takeRecord(), " menu 1; ");
}

TEST(TrayItemTest, ShowsOncePerTurnHoweverMuchHasChanged) {
    TrayRig rig;
    rig.takeRecord();
    rig.button().setImage(picture("plain"));
    rig.button().setToolTip("here");
    rig.button().setToolTip("away");
    EXPECT_EQ(rig.queue.queued(), 1U);
    EXPECT_EQ(rig.takeRecord(), "image plain tip away; ");
}

TEST(TrayItemTest, ShowsNothingWhenNothingDiffersFromWhatWasShownLast) {
    TrayRig rig;
    const auto evaluate = [&](const std::string& name, MenuItemState state) {
        rig.item->setState(1, state);
        rig.button().setImage(picture(name));
        rig.button().setImageIsTemplate(true);
        rig.button().setToolTip(name);
    };
    rig.setMenu({mark("one", 1, MenuItemState::off)});
    evaluate("plain", MenuItemState::off);
    rig.takeRecord();
    evaluate("plain", MenuItemState::off);
    EXPECT_EQ(rig.takeRecord(), "");
    evaluate("slashed", MenuItemState::on);
    evaluate("plain", MenuItemState::off);
    EXPECT_EQ(rig.takeRecord(), "");
    rig.setMenu({mark("one", 1, MenuItemState::off)});
    EXPECT_EQ(rig.takeRecord(), "");
}

TEST(TrayItemTest, ShowsOnlyWhatDiffers) {
    TrayRig rig;
    rig.setMenu({entry("zero"), mark("one", 1, MenuItemState::off), mark("two", 2, MenuItemState::off)});
    rig.button().setImage(picture("plain"));
    rig.takeRecord();
    rig.item->setState(2, MenuItemState::on);
    EXPECT_EQ(rig.takeRecord(), " 2 on; ");
    rig.button().setImageIsTemplate(true);
    EXPECT_EQ(rig.takeRecord(), "image plain template; ");
    rig.button().setToolTip("here");
    EXPECT_EQ(rig.takeRecord(), " tip here; ");
    rig.setMenu({entry("zero"), mark("one", 1, MenuItemState::on), mark("two", 2, MenuItemState::on)});
    EXPECT_EQ(rig.takeRecord(), " 1 on; ");
    rig.setMenu({entry("zero"), mark("one", 1, MenuItemState::off)});
    EXPECT_EQ(rig.takeRecord(), " menu 2; ");
}

TEST(TrayItemTest, IsATemplateOnlyUntilTheNextImage) {
    TrayRig rig;
    rig.button().setImage(picture("plain"));
    EXPECT_TRUE(rig.button().hasImage());
    rig.button().setImageIsTemplate(true);
    rig.button().setImage(picture("plain"));
    EXPECT_FALSE(rig.item->contents().imageIsTemplate);
}

TEST(TrayItemTest, IgnoresTheStateOfATagThatNoItemHas) {
    TrayRig rig;
    rig.item->setState(1, MenuItemState::on);
    rig.setMenu({mark("one", 1, MenuItemState::off)});
    rig.takeRecord();
    rig.item->setState(7, MenuItemState::on);
    EXPECT_EQ(rig.takeRecord(), "");
}

TEST(TrayItemTest, ShowsEverythingInALaterFrontAndNothingInTheOthers) {
    TrayRig rig;
    rig.setMenu({entry("one")});
    rig.takeRecord();
    std::string late;
    rig.item->add(std::make_unique<Recorder>(late));
    EXPECT_EQ(rig.takeRecord(), "");
    EXPECT_EQ(late, "image none tip  menu 1; ");
    rig.button().setToolTip("here");
    EXPECT_EQ(rig.takeRecord(), " tip here; ");
    EXPECT_EQ(late, "image none tip  menu 1;  tip here; ");
}

TEST(TrayItemTest, PerformsAChoiceFromTheQueue) {
    TrayRig rig;
    int performed = 0;
    rig.setMenu({entry("one"), entry("two", [&] { ++performed; })});
    rig.item->choose(1);
    EXPECT_EQ(performed, 0);
    rig.queue.run();
    EXPECT_EQ(performed, 1);
}

TEST(TrayItemTest, IgnoresTheChoiceOfAnItemThatCannotBeChosen) {
    TrayRig rig;
    MenuItem disabled = entry("no", [] { FAIL(); });
    disabled.isEnabled = false;
    MenuItem hint;
    hint.title = "hint";
    rig.item->choose(0);
    rig.setMenu({disabled, MenuItem::separator(), hint});
    rig.takeRecord();
    for (const std::size_t position : {0U, 1U, 2U, 3U, 4000000000U}) rig.item->choose(position);
    EXPECT_EQ(rig.takeRecord(), "");
}

TEST(TrayItemTest, ShowsTheStateAgainAfterAChoiceThatDidNotChangeIt) {
    TrayRig rig;
    rig.setMenu({entry("zero"), mark("one", 1, MenuItemState::on)});
    rig.takeRecord();
    rig.item->choose(1);
    EXPECT_EQ(rig.takeRecord(), " 1 on; ");
    rig.item->choose(0);
    EXPECT_EQ(rig.takeRecord(), "");
}

TEST(TrayItemTest, ShowsTheStateOnceAfterAChoiceThatChangedItInAQueuedBlock) {
    TrayRig rig;
    const auto evaluateLater = [&] { rig.queue.async([&] { rig.item->setState(1, MenuItemState::off); }); };
    rig.setMenu({mark("one", 1, MenuItemState::on, evaluateLater)});
    rig.takeRecord();
    rig.item->choose(0);
    EXPECT_EQ(rig.takeRecord(), " 0 off; ");
}

TEST(TrayItemTest, ShowsTheStateOfADisabledItemAgainAfterAClick) {
    TrayRig rig;
    MenuItem disabled = mark("one", 1, MenuItemState::on, [] { FAIL(); });
    disabled.isEnabled = false;
    rig.setMenu({disabled});
    rig.takeRecord();
    rig.item->choose(0);
    EXPECT_EQ(rig.takeRecord(), " 0 on; ");
}

TEST(TrayItemTest, ShowsNoStateAgainInAnotherMenu) {
    TrayRig rig;
    rig.setMenu({mark("one", 1, MenuItemState::on, [&] { rig.setMenu({entry("another")}); })});
    rig.takeRecord();
    rig.item->choose(0);
    EXPECT_EQ(rig.takeRecord(), " menu 1; ");
}

TEST(TrayItemTest, MayBeDestroyedInItsOwnAction) {
    TrayRig rig;
    rig.setMenu({mark("one", 1, MenuItemState::on, [&] { rig.item.reset(); })});
    rig.takeRecord();
    rig.item->choose(0);
    rig.item->choose(0);
    EXPECT_EQ(rig.takeRecord(), "");
    EXPECT_FALSE(rig.item);
}

TEST(TrayItemTest, ShowsNothingOnceItIsDestroyed) {
    TrayRig rig;
    rig.button().setToolTip("here");
    rig.item->choose(0);
    rig.item.reset();
    EXPECT_EQ(rig.takeRecord(), "");
}

TEST(TrayStatusBarTest, CreatesAnItemWithOneFrontOfEachMaker) {
    FakeMainQueue queue;
    std::string one;
    std::string other;
    std::unique_ptr<StatusItem> item;
    {
        const auto recorder = [](std::string& record) {
            return [&record](TrayItem&) { return std::make_unique<Recorder>(record); };
        };
        TrayStatusBar bar(queue, {recorder(one), recorder(other)});
        {
            const auto shortLived = bar.statusItem(StatusBar::variableLength);
        }
        item = bar.statusItem(StatusBar::variableLength);
    }
    item->button()->setToolTip("here");
    queue.run();
    EXPECT_EQ(one, "image none tip here menu 0; ");
    EXPECT_EQ(other, one);
}

}  // namespace
}  // namespace kovra
