#include "BLE_kovra/platform/linux/ui/tray/TrayMenu.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QImage>
#include <QPalette>
#include <QScreen>
#include <QTest>
#include <algorithm>
#include <string>
#include <vector>

#include "tests/platform/linux/ui/Luminance.h"
#include "tests/platform/linux/ui/QtRig.h"
#include "tests/platform/linux/ui/Themes.h"

namespace kovra {
namespace {

MenuItem item(const std::string& title, const std::string& keyEquivalent = "") {
    MenuItem made;
    made.title = title;
    made.action = MenuAction{"do", [] {}};
    made.keyEquivalent = keyEquivalent;
    return made;
}

class TrayMenuTest : public testing::Test {
  protected:
    TrayMenuTest() {
        value.items = {item("Toggle"), item("Hint"), item("Settings", ","), MenuItem::separator(), item("Quit", "q")};
        value.items[0].state = MenuItemState::on;
        value.items[1].action.reset();
        value.items[1].isEnabled = false;
        menu.show(value);
    }
    void open() {
        menu.popUp(QRect(40, 0, 24, 24));
        ASSERT_TRUE(menu.widget().isVisible());
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(&menu.widget(), key, modifiers);
        QCoreApplication::processEvents();
    }
    QAction& action(qsizetype position) { return *menu.widget().actions()[position]; }

    const QtRig rig{};
    Menu value;
    std::vector<std::size_t> chosen;
    TrayMenu menu{[this](std::size_t position) { chosen.push_back(position); }};
};

TEST_F(TrayMenuTest, ShowsTheGivenItems) {
    ASSERT_EQ(menu.widget().actions().size(), 5);
    EXPECT_EQ(action(0).text(), "Toggle");
    EXPECT_TRUE(action(0).isCheckable());
    EXPECT_TRUE(action(0).isChecked());
    EXPECT_FALSE(action(1).isEnabled());
    EXPECT_FALSE(action(2).isCheckable());
    EXPECT_EQ(action(2).shortcut().toString(), "Ctrl+,");
    EXPECT_TRUE(action(2).isShortcutVisibleInContextMenu());
    EXPECT_TRUE(action(3).isSeparator());
    EXPECT_EQ(action(4).shortcut().toString(), "Ctrl+Q");
}

TEST_F(TrayMenuTest, ShowsTextsLiterally) {
    value.items[0].title = "a & b && <b>c</b>_d\te";
    menu.show(value);
    EXPECT_EQ(action(0).text(), "a && b &&&& <b>c</b>_d e");
}

TEST_F(TrayMenuTest, ReportsThePositionOfTheChosenItem) {
    action(4).trigger();
    action(0).trigger();
    EXPECT_EQ(chosen, (std::vector<std::size_t>{4, 0}));
}

TEST_F(TrayMenuTest, CannotChooseTheHint) {
    action(1).trigger();
    EXPECT_TRUE(chosen.empty());
}

TEST_F(TrayMenuTest, CannotChooseAnItemWithoutAnAction) {
    value.items[4].action.reset();
    menu.show(value);
    action(4).trigger();
    EXPECT_TRUE(chosen.empty());
}

TEST_F(TrayMenuTest, KeepsTheGivenCheckMarkAfterAChoice) {
    action(0).trigger();
    EXPECT_TRUE(action(0).isChecked());
    value.items[0].state = MenuItemState::off;
    menu.show(value);
    EXPECT_FALSE(action(0).isChecked());
    action(0).trigger();
    EXPECT_FALSE(action(0).isChecked());
}

TEST_F(TrayMenuTest, ChangesInPlaceWhileItIsOpen) {
    const QAction* before = &action(0);
    value.items[0].state = MenuItemState::off;
    menu.show(value);
    EXPECT_EQ(&action(0), before);
}

TEST_F(TrayMenuTest, OpensBelowTheIconOrAboveItAtTheBottomOfTheScreen) {
    const QRect screen = menu.widget().screen()->geometry();
    for (const bool isAtBottom : {false, true}) {
        const QRect icon(40, isAtBottom ? screen.bottom() - 24 : 0, 24, 24);
        menu.popUp(icon);
        ASSERT_TRUE(menu.widget().isVisible());
        const QRect shown = menu.widget().geometry();
        EXPECT_FALSE(shown.intersects(icon));
        EXPECT_EQ(shown.bottom() < icon.top(), isAtBottom);
        EXPECT_TRUE(screen.contains(shown));
        menu.widget().close();
    }
}

TEST_F(TrayMenuTest, ObeysTheShortcutsThatItShowsWhileItIsOpen) {
    open();
    press(Qt::Key_Comma, Qt::ControlModifier);
    EXPECT_FALSE(menu.widget().isVisible());
    open();
    press(Qt::Key_Q, Qt::ControlModifier);
    EXPECT_FALSE(menu.widget().isVisible());
    EXPECT_EQ(chosen, (std::vector<std::size_t>{2, 4}));
}

TEST_F(TrayMenuTest, ObeysNoShortcutOfAnItemThatCannotBeChosen) {
    value.items[4].isEnabled = false;
    menu.show(value);
    open();
    press(Qt::Key_Q, Qt::ControlModifier);
    EXPECT_TRUE(menu.widget().isVisible());
    EXPECT_TRUE(chosen.empty());
}

TEST_F(TrayMenuTest, IsClosedByEscapeAndControlW) {
    open();
    press(Qt::Key_Escape);
    EXPECT_FALSE(menu.widget().isVisible());
    open();
    press(Qt::Key_W, Qt::ControlModifier);
    EXPECT_FALSE(menu.widget().isVisible());
    EXPECT_TRUE(chosen.empty());
}

TEST_F(TrayMenuTest, ShowsItsBoxesAndSeparatorsInDarkAndLightThemes) {
    value.items[0].state = MenuItemState::off;
    menu.show(value);
    for (const QPalette& theme : themes()) {
        QApplication::setPalette(theme);
        open();
        const QImage seen = menu.widget().grab().toImage();
        const auto strongest = [&](const QRect& in, QRgb background) {
            double most = 1;
            for (int x = in.left(); x <= in.right(); ++x)
                most = std::max(most, contrastBetween(seen.pixel(x, in.center().y()), background));
            return most;
        };
        // The left edge of the box crosses the middle of its row.
        const QRect row = menu.widget().actionGeometry(&action(0));
        const QRgb background = seen.pixel(row.right() - 2, row.center().y());
        EXPECT_GE(strongest(QRect(row.left() + 2, row.top(), row.height() / 2, row.height()), background), 3)
            << "the box on " << theme.color(QPalette::Base).name().toStdString();
        // The separator is one line, as wide as the menu.
        const QRect separator = menu.widget().actionGeometry(&action(3));
        int lines = 0;
        for (int y = separator.top(); y <= separator.bottom(); ++y) {
            int visible = 0;
            for (int x = separator.left(); x <= separator.right(); ++x)
                visible += contrastBetween(seen.pixel(x, y), background) >= 1.5 ? 1 : 0;
            if (visible >= separator.width() * 9 / 10) ++lines;
        }
        EXPECT_EQ(lines, 1) << "the separator on " << theme.color(QPalette::Base).name().toStdString();
        menu.widget().close();
    }
}

TEST_F(TrayMenuTest, ReplacesItsItems) {
    menu.show(Menu{{item("Only")}});
    ASSERT_EQ(menu.widget().actions().size(), 1);
    EXPECT_EQ(action(0).text(), "Only");
    EXPECT_TRUE(action(0).shortcut().isEmpty());
    menu.show(Menu());
    EXPECT_TRUE(menu.widget().isEmpty());
    menu.show(value);
    EXPECT_EQ(menu.widget().actions().size(), 5);
}

TEST_F(TrayMenuTest, IgnoresAKeyThatIsNotASingleCharacter) {
    value.items[4].keyEquivalent = "\xF0\x9F\x96\xB1";
    menu.show(value);
    EXPECT_TRUE(action(4).shortcut().isEmpty());
}

}  // namespace
}  // namespace kovra
