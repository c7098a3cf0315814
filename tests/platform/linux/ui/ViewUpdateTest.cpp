// What the user does to a view, and what of it survives when another view takes its place.

#include <gtest/gtest.h>

#include <QRadioButton>
#include <QTest>
#include <algorithm>

#include "tests/platform/linux/ui/ViewRig.h"

namespace kovra {
namespace {

using Path = std::vector<std::string>;

Path rowOf(const std::string& id) { return {"6", "0", id}; }

class ViewUpdate : public testing::Test {
  protected:
    ViewUpdate() {
        rig.surface.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&rig.surface));
    }

    void showMice(int count) {
        content.devices = sample::mice(count);
        rig.show(content);
    }
    QAbstractButton& button(const std::string& name) const {
        auto* found = rig.button(name);
        if (found == nullptr) throw std::runtime_error("no " + name);
        return *found;
    }
    static QPoint middle(const QWidget& widget) { return widget.rect().center(); }
    static void press(QWidget& widget) { QTest::mousePress(&widget, Qt::LeftButton, {}, middle(widget)); }
    static void release(QWidget& widget, QPoint at) { QTest::mouseRelease(&widget, Qt::LeftButton, {}, at); }
    static void click(QWidget& widget) { QTest::mouseClick(&widget, Qt::LeftButton, {}, middle(widget)); }
    // The keyboard's way: what has the focus gets the key.
    static void key(Qt::Key key) { QTest::keyClick(QApplication::focusWidget(), key); }
    static std::string focused() {
        const QWidget* widget = QApplication::focusWidget();
        return widget == nullptr ? "" : widget->accessibleName().toStdString();
    }

    const QtRig qt;
    ViewRig rig;
    sample::Content content;
};

TEST_F(ViewUpdate, TellsATickByTheDevicesId) {
    showMice(3);
    click(button("Mouse 1"));
    EXPECT_EQ(rig.changes, (std::vector<ControlChanged>{{1, rowOf("1"), true}}));
    click(button("Mouse 1"));
    click(button("Mouse 2"));
    EXPECT_EQ(rig.changes[1], (ControlChanged{2, rowOf("1"), false}));
    EXPECT_EQ(rig.changes[2], (ControlChanged{3, rowOf("2"), true}));
}

TEST_F(ViewUpdate, TellsTheSwitchAndTheModeByTheirPlaces) {
    showMice(1);
    click(button(content.texts.block));
    click(button(content.texts.always));
    EXPECT_EQ(rig.changes, (std::vector<ControlChanged>{{1, {"1"}, false}, {2, {"2"}, std::string("always")}}));
}

TEST_F(ViewUpdate, TellsAChoiceThatIsTheChoiceAlready) {
    showMice(0);
    click(button(content.texts.onDevice));
    EXPECT_EQ(rig.changes, (std::vector<ControlChanged>{{1, {"2"}, std::string("onDevice")}}));
    EXPECT_TRUE(button(content.texts.onDevice).isChecked());
}

TEST_F(ViewUpdate, CanBeClickedOnAllOfARow) {
    showMice(1);
    QAbstractButton& row = button("Mouse 0");
    for (const QPoint at : {QPoint(1, 1), QPoint(row.width() - 2, 1), QPoint(row.width() / 2, row.height() - 2)})
        QTest::mouseClick(&row, Qt::LeftButton, {}, at);
    EXPECT_EQ(rig.changes.size(), 3U);
}

TEST_F(ViewUpdate, TellsOfTheLink) {
    showMice(0);
    QAbstractButton& link = button("support@example.org");
    click(link);
    link.setFocus();
    for (const Qt::Key each : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space}) key(each);
    EXPECT_EQ(rig.links, std::vector<LinkFollowed>(4, {{"9", "1"}}));
}

TEST_F(ViewUpdate, LetsWhatTheUserDidStandUntilTheViewKnowsOfIt) {
    showMice(2);
    click(button("Mouse 0"));
    click(button(content.texts.always));
    rig.show(content, 0);
    EXPECT_TRUE(button("Mouse 0").isChecked());
    EXPECT_TRUE(button(content.texts.always).isChecked());
    // The first change was heard and refused, the second is still on its way.
    rig.show(content, 1);
    EXPECT_FALSE(button("Mouse 0").isChecked());
    EXPECT_TRUE(button(content.texts.always).isChecked());
    rig.show(content, 2);
    EXPECT_TRUE(button(content.texts.onDevice).isChecked());
    EXPECT_FALSE(button(content.texts.always).isChecked());
    EXPECT_EQ(rig.changes.size(), 2U);  // none of which was the user's doing
}

TEST_F(ViewUpdate, CountsTheUsersChangesOnFromWhatWasHeardBefore) {
    content.devices = sample::mice(1);
    rig.show(content, 7);
    click(button("Mouse 0"));
    EXPECT_EQ(rig.changes.front().number, 8U);
}

TEST_F(ViewUpdate, FollowsWhatIsChangedElsewhereWithoutTellingOfIt) {
    showMice(2);
    content.isEnabled = false;
    content.mode = "always";
    content.devices[1].isChosen = true;
    rig.show(content);
    EXPECT_FALSE(button(content.texts.block).isChecked());
    EXPECT_TRUE(button(content.texts.always).isChecked());
    EXPECT_TRUE(button("Mouse 1").isChecked());
    EXPECT_TRUE(rig.changes.empty());
}

TEST_F(ViewUpdate, ShowsNoModeThatItDoesNotKnow) {
    showMice(0);
    content.mode = "other";
    rig.show(content);
    EXPECT_FALSE(button(content.texts.always).isChecked());
    EXPECT_FALSE(button(content.texts.onDevice).isChecked());
    content.mode = "always";
    rig.show(content);
    EXPECT_TRUE(button(content.texts.always).isChecked());
}

TEST_F(ViewUpdate, PutsTheListInPlaceOfTheTextAtOnce) {
    showMice(0);
    EXPECT_EQ(rig.list(), nullptr);
    showMice(1);
    EXPECT_NE(rig.list(), nullptr);
    EXPECT_THROW(rig.label(content.texts.noDevices), std::runtime_error);
    showMice(0);
    EXPECT_EQ(rig.list(), nullptr);
    EXPECT_NO_THROW(rig.label(content.texts.noDevices));
}

TEST_F(ViewUpdate, KeepsTheWidgetsOfRowsThatMove) {
    showMice(20);
    QAbstractButton* const before = &button("Mouse 3");
    std::reverse(content.devices.begin(), content.devices.end());
    content.devices[16].name = "Renamed";
    rig.show(content);
    EXPECT_EQ(&button("Renamed"), before);
    EXPECT_EQ(rig.place(button("Mouse 19")).top(), rig.placeOfList().top() + pixels(4));
}

TEST_F(ViewUpdate, KeepsTheFocusOnItsDevice) {
    showMice(20);
    button("Mouse 3").setFocus();
    std::reverse(content.devices.begin(), content.devices.end());
    rig.show(content);
    EXPECT_EQ(focused(), "Mouse 3");
    key(Qt::Key_Space);
    EXPECT_EQ(rig.changes.back().path, rowOf("3"));
    content.devices.insert(content.devices.begin(), {"new", "New"});
    rig.show(content);
    EXPECT_EQ(focused(), "Mouse 3");
}

TEST_F(ViewUpdate, GivesTheFocusOfARowThatGoesToItsNeighbour) {
    showMice(4);
    button("Mouse 1").setFocus();
    content.devices.erase(content.devices.begin() + 1);
    rig.show(content);
    EXPECT_EQ(focused(), "Mouse 2");
    content.devices.pop_back();
    content.devices.pop_back();
    rig.show(content);
    EXPECT_EQ(focused(), "support@example.org");
    button("Mouse 0").setFocus();
    showMice(0);
    EXPECT_EQ(focused(), "support@example.org");
}

TEST_F(ViewUpdate, ReachesEveryControlByTabAsTheEyeDoes) {
    showMice(3);
    std::swap(content.devices[0], content.devices[2]);
    content.devices.insert(content.devices.begin() + 1, {"new", "New"});
    rig.show(content);
    const std::vector<std::string> order{content.texts.block, content.texts.onDevice, "Mouse 2", "New", "Mouse 1",
                                         "Mouse 0",           "support@example.org"};
    button(content.texts.block).setFocus(Qt::TabFocusReason);
    std::vector<std::string> reached;
    for (std::size_t i = 0; i < order.size(); ++i) {
        reached.push_back(focused());
        key(Qt::Key_Tab);
    }
    EXPECT_EQ(reached, order);
    EXPECT_EQ(focused(), content.texts.block);
    key(Qt::Key_Backtab);
    EXPECT_EQ(focused(), "support@example.org");
    key(Qt::Key_Backtab);
    EXPECT_EQ(focused(), "Mouse 0");
}

TEST_F(ViewUpdate, MovesByTheArrowKeys) {
    showMice(2);
    button(content.texts.onDevice).setFocus();
    key(Qt::Key_Up);
    EXPECT_EQ(focused(), content.texts.always);
    EXPECT_EQ(rig.changes, (std::vector<ControlChanged>{{1, {"2"}, std::string("always")}}));
    button("Mouse 0").setFocus();
    key(Qt::Key_Down);
    EXPECT_EQ(focused(), "Mouse 1");
    key(Qt::Key_Up);
    EXPECT_EQ(focused(), "Mouse 0");
}

TEST_F(ViewUpdate, ScrollsWhatTheKeyboardReachesIntoSight) {
    showMice(50);
    const auto isInSight = [this](const std::string& name) {
        QWidget& row = button(name);
        return row.visibleRegion().boundingRect() == row.rect();
    };
    EXPECT_FALSE(isInSight("Mouse 49"));
    button("support@example.org").setFocus();
    key(Qt::Key_Backtab);
    EXPECT_EQ(focused(), "Mouse 49");
    EXPECT_TRUE(isInSight("Mouse 49"));
    button(content.texts.onDevice).setFocus();
    key(Qt::Key_Tab);
    EXPECT_TRUE(isInSight("Mouse 0"));
}

TEST_F(ViewUpdate, KeepsHowFarItIsScrolled) {
    showMice(100);
    QScrollBar& bar = *rig.list()->verticalScrollBar();
    bar.setValue(777);
    std::reverse(content.devices.begin(), content.devices.end());
    rig.show(content);
    EXPECT_EQ(bar.value(), 777);
    showMice(200);
    EXPECT_EQ(bar.value(), 777);
    content.isMuted = true;
    rig.show(content);
    EXPECT_EQ(bar.value(), 777);
    showMice(2);
    EXPECT_EQ(bar.value(), 0);
}

TEST_F(ViewUpdate, LetsAClickThatIsHalfMadeBeFinished) {
    showMice(3);
    QAbstractButton& row = button("Mouse 1");
    press(row);
    content.devices[1].name = "Renamed";
    content.devices[1].isChosen = true;
    content.isMuted = true;
    rig.show(content);
    EXPECT_TRUE(row.isDown());
    release(row, middle(row));
    EXPECT_EQ(rig.changes, (std::vector<ControlChanged>{{1, rowOf("1"), false}}));
}

TEST_F(ViewUpdate, TicksNothingWhereTheRowHasMovedAway) {
    showMice(5);
    QAbstractButton& row = button("Mouse 1");
    press(row);
    const QPoint pointer = row.mapTo(&rig.surface, middle(row));
    std::reverse(content.devices.begin(), content.devices.end());
    rig.show(content);
    ASSERT_NE(rig.surface.childAt(pointer), &row);
    release(row, row.mapFrom(&rig.surface, pointer));  // which holds the pointer since the press
    EXPECT_TRUE(rig.changes.empty());
}

TEST_F(ViewUpdate, TicksNothingWhereTheRowIsGone) {
    showMice(5);
    press(button("Mouse 1"));
    content.devices.erase(content.devices.begin() + 1);
    rig.show(content);
    QAbstractButton& there = button("Mouse 2");  // where the row was
    release(there, middle(there));
    EXPECT_TRUE(rig.changes.empty());
}

TEST_F(ViewUpdate, KeepsAKeyThatIsHeldWithItsRow) {
    showMice(5);
    QAbstractButton& row = button("Mouse 1");
    row.setFocus();
    QTest::keyPress(&row, Qt::Key_Space);
    std::reverse(content.devices.begin(), content.devices.end());
    rig.show(content);
    QTest::keyRelease(&row, Qt::Key_Space);
    EXPECT_EQ(rig.changes, (std::vector<ControlChanged>{{1, rowOf("1"), true}}));
}

TEST_F(ViewUpdate, NamesEveryControlForScreenReaders) {
    content.devices = {{"a", "Mouse"}, {"b", "Rat", false}};
    rig.show(content);
    for (const char* name : {"Mute trackpad", "Always", "When the selected mouse is connected", "Mouse",
                             "Rat, disconnected", "support@example.org"}) {
        EXPECT_NE(rig.button(name), nullptr) << name;
    }
    EXPECT_EQ(button("Always").parentWidget()->accessibleName(), "Mode:");
}

TEST_F(ViewUpdate, ShowsTextsAsTheyAre) {
    content.devices = {{"a", "a & b && <b>c</b> _d\te\nf"}};
    content.texts.title = "<i>x</i> & y";
    rig.show(content);
    EXPECT_NE(rig.button("a & b && <b>c</b> _d e f"), nullptr);
    EXPECT_NO_THROW(rig.label("<i>x</i> & y"));
    // Not one key more than the specified ones does anything.
    for (const Qt::Key each : {Qt::Key_B, Qt::Key_Y, Qt::Key_D}) QTest::keyClick(&rig.surface, each, Qt::AltModifier);
    EXPECT_TRUE(rig.changes.empty());
}

TEST_F(ViewUpdate, ShowsNamesThatAreAlikeAsDevicesOfTheirOwn) {
    content.devices = {{"a", "Mouse"}, {"b", "Mouse"}};
    rig.show(content);
    const auto rows = rig.list()->findChildren<QCheckBox*>();
    ASSERT_EQ(rows.size(), 2);
    click(*rows[1]);
    EXPECT_EQ(rig.changes.back().path, rowOf("b"));
}

}  // namespace
}  // namespace kovra
