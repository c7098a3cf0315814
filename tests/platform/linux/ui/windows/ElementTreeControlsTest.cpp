// Tests of input from the mouse, the keyboard and screen readers.

#include <gtest/gtest.h>

#include <QImage>
#include <QStyle>
#include <utility>

#include "tests/platform/linux/ui/ActiveView.h"

namespace kovra {
namespace {

class ElementTreeControlsTest : public ActiveView {
  protected:
    QImage picture(const QWidget& widget) { return rig.surface.grab(rig.place(widget)).toImage(); }
};

TEST_F(ElementTreeControlsTest, ReportsATickWithTheIdOfTheDevice) {
    showMice(3);
    click(button("Mouse 1"));
    EXPECT_EQ(rig.changes, (Changes{{rowOf("1"), true}}));
    click(button("Mouse 1"));
    click(button("Mouse 2"));
    EXPECT_EQ(rig.changes[1], (Change{rowOf("1"), false}));
    EXPECT_EQ(rig.changes[2], (Change{rowOf("2"), true}));
}

TEST_F(ElementTreeControlsTest, ReportsTheSwitchAndTheModeByTheirPositions) {
    showMice(1);
    click(button(content.texts.block));
    click(button(content.texts.always));
    EXPECT_EQ(rig.changes, (Changes{{{"1"}, false}, {{"2"}, std::string("always")}}));
}

TEST_F(ElementTreeControlsTest, ReportsAChoiceThatIsAlreadySelected) {
    showMice(0);
    click(button(content.texts.onDevice));
    EXPECT_EQ(rig.changes, (Changes{{{"2"}, std::string("onDevice")}}));
    EXPECT_TRUE(button(content.texts.onDevice).isChecked());
}

TEST_F(ElementTreeControlsTest, AcceptsAClickAnywhereOnARow) {
    showMice(1);
    QAbstractButton& row = button("Mouse 0");
    for (const QPoint at : {QPoint(1, 1), QPoint(row.width() - 2, 1), QPoint(row.width() / 2, row.height() - 2)})
        QTest::mouseClick(&row, Qt::LeftButton, {}, at);
    EXPECT_EQ(rig.changes.size(), 3U);
}

TEST_F(ElementTreeControlsTest, ReportsThatTheLinkWasFollowed) {
    showMice(0);
    QAbstractButton& link = button("support@example.org");
    click(link);
    link.setFocus();
    for (const Qt::Key each : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space}) key(each);
    EXPECT_EQ(rig.links, std::vector<std::vector<std::string>>(4, {"9", "1"}));
}

TEST_F(ElementTreeControlsTest, TabReachesEveryControlInVisualOrder) {
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

TEST_F(ElementTreeControlsTest, ArrowKeysMoveTheFocus) {
    showMice(2);
    button(content.texts.onDevice).setFocus();
    key(Qt::Key_Up);
    EXPECT_EQ(focused(), content.texts.always);
    EXPECT_EQ(rig.changes, (Changes{{{"2"}, std::string("always")}}));
    button("Mouse 0").setFocus();
    key(Qt::Key_Down);
    EXPECT_EQ(focused(), "Mouse 1");
    key(Qt::Key_Up);
    EXPECT_EQ(focused(), "Mouse 0");
}

TEST_F(ElementTreeControlsTest, FramesTheLabelOfTheFocusedButton) {
    rig.show(content);
    QAbstractButton& block = button(content.texts.block);
    const int box = block.style()->pixelMetric(QStyle::PM_IndicatorWidth);
    // Returns the first column beside the box that contains a pixel unlike that of `other`.
    const auto firstColumn = [&](const QImage& image, const auto& other) {
        for (int x = box; x < image.width(); ++x) {
            for (int y = 0; y < image.height(); ++y) {
                if (image.pixel(x, y) != other(x, y)) return x;
            }
        }
        return -1;
    };
    block.setFocus();
    key(Qt::Key_Tab);
    const QImage without = picture(block);
    key(Qt::Key_Backtab);
    const QImage with = picture(block);
    const int label = firstColumn(without, [&](int, int) { return without.pixel(box, 0); });
    const int frame = firstColumn(with, [&](int x, int y) { return without.pixel(x, y); });
    EXPECT_GT(frame, box);
    EXPECT_LT(frame, label);
    EXPECT_EQ(with.copy(0, 0, box, with.height()), without.copy(0, 0, box, with.height())) << "the box has a frame";
}

TEST_F(ElementTreeControlsTest, ScrollsTheFocusedRowIntoView) {
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

TEST_F(ElementTreeControlsTest, PaintsARingAroundTheFocusedControl) {
    showMice(1);
    rig.surface.setAttribute(Qt::WA_KeyboardFocusChange);  // as after a press of the Tab key
    for (const std::string& name : {content.texts.block, content.texts.always, std::string("support@example.org")}) {
        QAbstractButton& control = button(name);
        rig.surface.setFocus();
        const QImage before = picture(control);
        control.setFocus(Qt::TabFocusReason);
        const QImage focused = picture(control);
        int differing = 0;
        for (int y = 0; y < before.height(); ++y) {
            for (int x = 0; x < before.width(); ++x) differing += before.pixel(x, y) != focused.pixel(x, y) ? 1 : 0;
        }
        EXPECT_GT(differing, before.width()) << name;
    }
}

TEST_F(ElementTreeControlsTest, NamesEveryControlForScreenReaders) {
    content.devices = {{"a", "Mouse"}, {"b", "Rat", false}};
    rig.show(content);
    for (const char* name : {"Mute trackpad", "Always", "When the selected mouse is connected", "Mouse",
                             "Rat, disconnected", "support@example.org"}) {
        EXPECT_NE(rig.button(name), nullptr) << name;
    }
    EXPECT_EQ(button("Always").parentWidget()->accessibleName(), "Mode:");
}

TEST_F(ElementTreeControlsTest, ShowsTextsLiterally) {
    content.devices = {{"a", "a & b && <b>c</b> _d\te\nf"}};
    content.texts.title = "<i>x</i> & y";
    rig.show(content);
    EXPECT_NE(rig.button("a & b && <b>c</b> _d e f"), nullptr);
    EXPECT_NO_THROW(rig.label("<i>x</i> & y"));
    // No character of a text is a mnemonic, so Alt with a letter changes nothing.
    for (const Qt::Key each : {Qt::Key_B, Qt::Key_Y, Qt::Key_D}) QTest::keyClick(&rig.surface, each, Qt::AltModifier);
    EXPECT_TRUE(rig.changes.empty());
}

TEST_F(ElementTreeControlsTest, ShowsDevicesWithTheSameNameSeparately) {
    content.devices = {{"a", "Mouse"}, {"b", "Mouse"}};
    rig.show(content);
    const auto rows = rig.list()->findChildren<QCheckBox*>();
    ASSERT_EQ(rows.size(), 2);
    click(*rows[1]);
    EXPECT_EQ(rig.changes.back().path, rowOf("b"));
}

}  // namespace
}  // namespace kovra
