#include "BLE_kovra/platform/linux/ui/tray/TrayMenu.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QScreen>
#include <string>
#include <vector>

#include "tests/platform/linux/ui/QtRig.h"

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
