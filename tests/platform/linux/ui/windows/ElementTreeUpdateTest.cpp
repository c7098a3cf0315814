// Tests of updates of a view while the user operates it.

#include <gtest/gtest.h>

#include <QPaintEvent>
#include <QRegion>
#include <algorithm>

#include "tests/platform/linux/ui/ActiveView.h"

namespace kovra {
namespace {

class ElementTreeUpdateTest : public ActiveView {
  protected:
    // Returns the region that the surface repaints until the event loop is idle.
    QRegion repainted() {
        struct Watch : QObject {
            bool eventFilter(QObject*, QEvent* event) override {
                if (event->type() == QEvent::Paint) region += static_cast<QPaintEvent*>(event)->region();
                return false;
            }
            QRegion region;
        } watch;
        rig.surface.installEventFilter(&watch);
        QTest::qWait(50);
        return watch.region;
    }
};

TEST_F(ElementTreeUpdateTest, KeepsTheUsersChangeUntilItIsAcknowledged) {
    showMice(2);
    click(button("Mouse 0"));
    click(button(content.texts.always));
    rig.show(content, 0);
    EXPECT_TRUE(button("Mouse 0").isChecked());
    EXPECT_TRUE(button(content.texts.always).isChecked());
    // This update acknowledges the first change and rejects it. The second change is still pending.
    rig.show(content, 1);
    EXPECT_FALSE(button("Mouse 0").isChecked());
    EXPECT_TRUE(button(content.texts.always).isChecked());
    rig.show(content, 2);
    EXPECT_TRUE(button(content.texts.onDevice).isChecked());
    EXPECT_FALSE(button(content.texts.always).isChecked());
    EXPECT_EQ(rig.changes.size(), 2U);  // the updates are not changes of the user
}

TEST_F(ElementTreeUpdateTest, ShowsChangesFromElsewhereWithoutReportingThem) {
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

TEST_F(ElementTreeUpdateTest, RepaintsADotThatChanges) {
    showMice(0);
    repainted();
    EXPECT_TRUE(repainted().isEmpty());
    content.isMuted = true;
    rig.show(content);
    const QRect status = rig.place(content.texts.status);
    EXPECT_TRUE(repainted().contains(QPoint(pixels(24), status.center().y())));
}

TEST_F(ElementTreeUpdateTest, SelectsNothingForAnUnknownMode) {
    showMice(0);
    content.mode = "other";
    rig.show(content);
    EXPECT_FALSE(button(content.texts.always).isChecked());
    EXPECT_FALSE(button(content.texts.onDevice).isChecked());
    content.mode = "always";
    rig.show(content);
    EXPECT_TRUE(button(content.texts.always).isChecked());
}

TEST_F(ElementTreeUpdateTest, ReplacesTheTextByTheListAtOnce) {
    showMice(0);
    EXPECT_EQ(rig.list(), nullptr);
    showMice(1);
    EXPECT_NE(rig.list(), nullptr);
    EXPECT_THROW(rig.label(content.texts.noDevices), std::runtime_error);
    showMice(0);
    EXPECT_EQ(rig.list(), nullptr);
    EXPECT_NO_THROW(rig.label(content.texts.noDevices));
}

TEST_F(ElementTreeUpdateTest, KeepsTheWidgetsOfRowsThatMove) {
    showMice(20);
    QAbstractButton* const before = &button("Mouse 3");
    std::reverse(content.devices.begin(), content.devices.end());
    content.devices[16].name = "Renamed";
    rig.show(content);
    EXPECT_EQ(&button("Renamed"), before);
    EXPECT_EQ(rig.place(button("Mouse 19")).top(), rig.placeOfList().top() + pixels(4));
}

TEST_F(ElementTreeUpdateTest, KeepsTheFocusOnItsDevice) {
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

TEST_F(ElementTreeUpdateTest, MovesTheFocusOfARemovedRowToItsNeighbor) {
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

TEST_F(ElementTreeUpdateTest, KeepsTheScrollPosition) {
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

TEST_F(ElementTreeUpdateTest, FinishesAClickThatBeganBeforeTheUpdate) {
    showMice(3);
    QAbstractButton& row = button("Mouse 1");
    press(row);
    content.devices[1].name = "Renamed";
    content.devices[1].isChosen = true;
    content.isMuted = true;
    rig.show(content);
    EXPECT_TRUE(row.isDown());
    release(row, middle(row));
    EXPECT_EQ(rig.changes, (Changes{{rowOf("1"), false}}));
}

TEST_F(ElementTreeUpdateTest, TicksNothingIfTheRowMovesAwayDuringTheClick) {
    showMice(5);
    QAbstractButton& row = button("Mouse 1");
    press(row);
    const QPoint pointer = row.mapTo(&rig.surface, middle(row));
    std::reverse(content.devices.begin(), content.devices.end());
    rig.show(content);
    ASSERT_NE(rig.surface.childAt(pointer), &row);
    release(row, row.mapFrom(&rig.surface, pointer));  // the row still grabs the pointer
    EXPECT_TRUE(rig.changes.empty());
}

TEST_F(ElementTreeUpdateTest, TicksNothingIfTheRowIsRemovedDuringTheClick) {
    showMice(5);
    press(button("Mouse 1"));
    content.devices.erase(content.devices.begin() + 1);
    rig.show(content);
    QAbstractButton& there = button("Mouse 2");  // at the position of the removed row
    release(there, middle(there));
    EXPECT_TRUE(rig.changes.empty());
}

TEST_F(ElementTreeUpdateTest, KeepsAHeldKeyWithItsRow) {
    showMice(5);
    QAbstractButton& row = button("Mouse 1");
    row.setFocus();
    QTest::keyPress(&row, Qt::Key_Space);
    std::reverse(content.devices.begin(), content.devices.end());
    rig.show(content);
    QTest::keyRelease(&row, Qt::Key_Space);
    EXPECT_EQ(rig.changes, (Changes{{rowOf("1"), true}}));
}

}  // namespace
}  // namespace kovra
