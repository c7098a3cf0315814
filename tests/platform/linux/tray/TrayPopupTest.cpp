#include "BLE_kovra/platform/linux/tray/TrayPopup.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <climits>
#include <csignal>

#include "tests/platform/linux/tray/ItemOnScreen.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;

// The item's menu where a desktop asks for it.
class TrayPopupTest : public ItemOnScreen {
  protected:
    static constexpr xcb_keycode_t escape = 9, enter = 36, down = 116;

    TrayPopupTest() { let(1ms); }  // in which the item takes up its menu

    void ask(int atX, int atY) {
        isAnswered = false;
        popup.open(atX, atY);
        patience.run();
    }
    void waitForClosed() {
        waitUntil([&] { return !menu() && isAnswered; });
    }
    void choose(int y) {
        const auto opened = openedMenu();
        onlooker.click(XCB_BUTTON_INDEX_1, opened.x + 30, y < 0 ? opened.y + opened.height + y : opened.y + y);
    }

    TrayPopup popup{patience, window, item};
    bool isAnswered = false;  // since it was asked for last
    WindowProcess::Messages::Token answers = window.listen([this](const ToResident&) { isAnswered = true; });
};

TEST_F(TrayPopupTest, OpensTheMenuWhereItIsAskedFor) {
    EXPECT_TRUE(windowProcesses().empty());
    ask(100, 50);
    const auto opened = openedMenu();
    EXPECT_EQ(opened.x, 100);
    EXPECT_GT(opened.y, 50) << "it covers the place";
    EXPECT_LT(opened.y, 50 + 20);
}

TEST_F(TrayPopupTest, KeepsTheMenuOnTheScreenAndThePlaceFree) {
    ask(639, 479);
    const auto opened = openedMenu();
    EXPECT_LE(opened.x + opened.width, 640);
    EXPECT_LT(opened.y + opened.height, 479) << "it covers the place";
    EXPECT_GT(opened.y + opened.height, 479 - 20);
}

TEST_F(TrayPopupTest, OpensTheMenuOnTheScreenAlsoForAPlaceThatIsOnNone) {
    for (const int far : {INT_MIN, INT_MAX}) {
        ask(far, far);
        const auto opened = openedMenu();
        EXPECT_GE(opened.x, 0);
        EXPECT_GE(opened.y, 0);
        EXPECT_LE(opened.x + opened.width, 640);
        EXPECT_LE(opened.y + opened.height, 480);
        onlooker.tap(escape);
        waitForClosed();
    }
}

TEST_F(TrayPopupTest, PerformsWhatIsChosenByMouse) {
    ask(100, 50);
    choose(-10);
    waitUntil([&] { return done == std::vector<std::string>{"quit"}; });
    waitForClosed();
    ask(200, 60);
    choose(10);
    waitUntil([&] { return done == std::vector<std::string>{"quit", "toggle"}; });
}

TEST_F(TrayPopupTest, PerformsWhatIsChosenByKeyboard) {
    ask(100, 50);
    openedMenu();
    onlooker.tap(down);
    onlooker.tap(down);
    onlooker.tap(enter);
    waitUntil([&] { return done == std::vector<std::string>{"quit"}; });
}

TEST_F(TrayPopupTest, ShowsTheMenuAsTheItemHasItNow) {
    const auto look = [&] {
        ask(100, 50);
        const auto opened = openedMenu();
        waitUntil([&] { return onlooker.colors(opened).size() > 10; });
        let(100ms);
        const auto seen = onlooker.pixels({opened.x + 4, opened.y + 2, 20, 20});
        onlooker.tap(escape);
        waitForClosed();
        return seen;
    };
    const auto checked = look();
    item.setState(toggleTag, MenuItemState::off);
    let(1ms);
    EXPECT_NE(look(), checked);
    item.setState(toggleTag, MenuItemState::on);
    let(1ms);
    EXPECT_EQ(look(), checked);
}

TEST_F(TrayPopupTest, ClosesTheMenuAtEscape) {
    ask(100, 50);
    openedMenu();
    onlooker.tap(escape);
    waitForClosed();
    EXPECT_TRUE(done.empty());
}

TEST_F(TrayPopupTest, ClosesTheMenuWhenItIsAskedForAgain) {
    ask(100, 50);
    openedMenu();
    let(50ms);
    ask(100, 50);
    waitForClosed();
    ask(100, 50);
    openedMenu();
}

TEST_F(TrayPopupTest, OpensTheMenuOnceForADoubleClick) {
    ask(100, 50);
    ask(100, 50);
    openedMenu();
    let(200ms);
    EXPECT_TRUE(menu());
}

TEST_F(TrayPopupTest, IsReadyForTheNextChoiceAfterAClickBesideTheMenu) {
    ask(100, 50);
    openedMenu();
    onlooker.click(XCB_BUTTON_INDEX_1, 10, 10);
    waitForClosed();
    ask(100, 50);
    choose(-10);
    waitUntil([&] { return done == std::vector<std::string>{"quit"}; });
}

TEST_F(TrayPopupTest, LetsTheProcessGoAWhileAfterTheMenuClosed) {
    ask(100, 50);
    openedMenu();
    let(linger + 100ms);  // while it is open
    EXPECT_TRUE(menu());
    onlooker.tap(escape);
    waitForClosed();
    EXPECT_EQ(windowProcesses().size(), 1U);
    waitUntil([] { return windowProcesses().empty(); });
}

TEST_F(TrayPopupTest, StaysForTheWholeWhileAfterTheLastTime) {
    ask(100, 50);
    openedMenu();
    const auto process = windowProcesses();
    onlooker.tap(escape);
    waitForClosed();
    ask(100, 50);
    openedMenu();
    let(linger + 100ms);
    EXPECT_TRUE(menu());
    EXPECT_EQ(windowProcesses(), process);
}

TEST_F(TrayPopupTest, OpensNothingForARequestThatIsLate) {
    int closed = 0;
    const auto listening = window.listen([&](const ToResident&) { ++closed; });
    const auto now =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now().time_since_epoch());
    window.send(PopUpMenu{.x = 100, .y = 50, .asked = now - 2'001ms, .menu = item.shown().menu});
    waitUntil([&] { return closed == 1; });
    let(100ms);
    EXPECT_FALSE(menu());
}

TEST_F(TrayPopupTest, OpensNothingWhereTheProcessWasStoppedForTooLong) {
    ask(100, 50);
    openedMenu();
    onlooker.tap(escape);
    waitForClosed();
    const pid_t process = windowProcesses().front();
    ::kill(process, SIGSTOP);
    ask(100, 50);
    let(2'100ms);
    ::kill(process, SIGCONT);
    waitForClosed();
    EXPECT_FALSE(menu());
    ask(100, 50);
    openedMenu();
}

TEST_F(TrayPopupTest, LosesNothingWhenTheProcessIsKilledAndOpensNothingByItself) {
    ask(100, 50);
    openedMenu();
    ::kill(windowProcesses().front(), SIGKILL);
    waitUntil([&] { return !menu() && windowProcesses().empty(); });
    let(300ms);
    EXPECT_TRUE(windowProcesses().empty());
    ask(100, 50);
    choose(-10);
    waitUntil([&] { return done == std::vector<std::string>{"quit"}; });
}

}  // namespace
}  // namespace kovra
