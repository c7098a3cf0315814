#include "BLE_kovra/platform/linux/tray/TrayPopup.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <climits>
#include <csignal>
#include <variant>

#include "tests/platform/linux/tray/ItemOnScreen.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;

// Tests of the item's menu when a desktop requests it.
class TrayPopupTest : public ItemOnScreen {
  protected:
    static constexpr xcb_keycode_t escape = 9, enter = 36, down = 116, letterQ = 24, letterW = 25, control = 37;

    TrayPopupTest() { let(1ms); }  // the item adopts its menu in the next turn

    void request(int atX, int atY) {
        isAnswered = false;
        requestedAt = now();
        popup.open(atX, atY);
        fakeQueue.run();
    }
    // Requests the menu, and requests it again if the window process refuses the request, as a user clicks again. The
    // process refuses a request that is older than two seconds. On a busy machine, the start of the process may take
    // longer.
    Onlooker::Place openMenuAt(int atX, int atY, int clicks = 1) {
        constexpr int attempts = 10;
        for (int attempt = 0; attempt < attempts; ++attempt) {
            for (int click = 0; click < clicks; ++click) request(atX, atY);
            waitUntil([&] { return menu() || isAnswered; });
            if (!isAnswered) break;
            EXPECT_GT(now() - requestedAt, 2s) << "it refused a new request";
        }
        return openedMenu();
    }
    void waitForClosed() {
        waitUntil([&] { return !menu() && isAnswered; });
    }
    // Moves the pointer onto the menu item that is y pixels below the menu's top edge, or -y pixels above its bottom
    // edge. Clicks once the item is highlighted. From version 6.8, Qt closes a new menu if it is clicked before that.
    void choose(const Onlooker::Place& opened, int y) {
        const int atX = opened.x + 30;
        const int atY = y < 0 ? opened.y + opened.height + y : opened.y + y;
        const Onlooker::Place edge{opened.x + 3, atY, 2, 1};  // of the item, where it has no text
        waitUntil([&] { return onlooker.colors(opened).size() > 10; });
        const auto before = onlooker.pixels(edge);
        int steps = 0;
        waitUntil([&] {
            onlooker.movePointer(atX + ++steps % 2, atY);
            return onlooker.pixels(edge) != before;
        });
        onlooker.click(XCB_BUTTON_INDEX_1, atX, atY);
    }
    static std::chrono::milliseconds now() {
        return std::chrono::duration_cast<std::chrono::milliseconds>(
            std::chrono::steady_clock::now().time_since_epoch());
    }

    TrayPopup popup{fakeQueue, window, item};
    std::chrono::milliseconds requestedAt{};  // the time of the last request
    bool isAnswered = false;                  // the process has refused the last request or closed its menu
    WindowProcess::Messages::Token answers = window.listen([this](const ToResident& message) {
        const auto* closed = std::get_if<MenuClosed>(&message);
        if (closed != nullptr && closed->asked >= requestedAt) isAnswered = true;
    });
};

TEST(TrayPopupNeedTest, PlasmaAndGnomeShellOpenTheMenuThemselves) {
    EXPECT_FALSE(TrayPopup::isNeededOn({"KDE"}));
    EXPECT_FALSE(TrayPopup::isNeededOn({"GNOME"}));
    EXPECT_FALSE(TrayPopup::isNeededOn({"ubuntu", "GNOME"}));
}

TEST(TrayPopupNeedTest, OtherPanelsMayNeedIt) {
    EXPECT_TRUE(TrayPopup::isNeededOn({"LXQt"}));
    EXPECT_TRUE(TrayPopup::isNeededOn({"MATE"}));
    EXPECT_TRUE(TrayPopup::isNeededOn({"Budgie", "GNOME"}));
    EXPECT_TRUE(TrayPopup::isNeededOn({"GNOME-Flashback", "GNOME"}));
    EXPECT_TRUE(TrayPopup::isNeededOn({}));
}

TEST_F(TrayPopupTest, OpensTheMenuAtTheRequestedPosition) {
    EXPECT_TRUE(windowProcesses().empty());
    const auto opened = openMenuAt(100, 50);
    EXPECT_EQ(opened.x, 100);
    EXPECT_GT(opened.y, 50) << "it covers the position";
    EXPECT_LT(opened.y, 50 + 20);
}

TEST_F(TrayPopupTest, KeepsTheMenuOnTheScreenAndThePositionFree) {
    const auto opened = openMenuAt(639, 479);
    EXPECT_LE(opened.x + opened.width, 640);
    EXPECT_LT(opened.y + opened.height, 479) << "it covers the position";
    EXPECT_GT(opened.y + opened.height, 479 - 20);
}

TEST_F(TrayPopupTest, OpensTheMenuOnTheScreenForAPositionOutsideIt) {
    for (const int far : {INT_MIN, INT_MAX}) {
        const auto opened = openMenuAt(far, far);
        EXPECT_GE(opened.x, 0);
        EXPECT_GE(opened.y, 0);
        EXPECT_LE(opened.x + opened.width, 640);
        EXPECT_LE(opened.y + opened.height, 480);
        onlooker.tap(escape);
        waitForClosed();
    }
}

TEST_F(TrayPopupTest, PerformsAChoiceByMouse) {
    choose(openMenuAt(100, 50), -10);
    waitUntil([&] { return done == std::vector<std::string>{"quit"}; });
    waitForClosed();
    choose(openMenuAt(200, 60), 10);
    waitUntil([&] { return done == std::vector<std::string>{"quit", "toggle"}; });
}

TEST_F(TrayPopupTest, PerformsAChoiceByKeyboard) {
    openMenuAt(100, 50);
    onlooker.tap(down);
    onlooker.tap(down);
    onlooker.tap(enter);
    waitUntil([&] { return done == std::vector<std::string>{"quit"}; });
}

TEST_F(TrayPopupTest, PerformsAShortcutThatTheMenuShows) {
    openMenuAt(100, 50);
    onlooker.tap(letterQ, control);
    waitUntil([&] { return done == std::vector<std::string>{"quit"}; });
    waitForClosed();
    openMenuAt(100, 50);
    onlooker.tap(letterW, control);
    waitForClosed();
    EXPECT_EQ(done, std::vector<std::string>{"quit"});
}

TEST_F(TrayPopupTest, ShowsTheCurrentMenuOfTheItem) {
    const auto look = [&] {
        const auto opened = openMenuAt(100, 50);
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
    openMenuAt(100, 50);
    onlooker.tap(escape);
    waitForClosed();
    EXPECT_TRUE(done.empty());
}

TEST_F(TrayPopupTest, ClosesTheMenuAtTheNextRequest) {
    openMenuAt(100, 50);
    let(500ms);  // a request that is older than the menu does not close it
    request(100, 50);
    waitForClosed();
    openMenuAt(100, 50);
}

TEST_F(TrayPopupTest, OpensTheMenuOnceForADoubleClick) {
    openMenuAt(100, 50, 2);
    let(200ms);
    EXPECT_TRUE(menu());
}

TEST_F(TrayPopupTest, IsReadyForTheNextChoiceAfterAClickOutsideTheMenu) {
    openMenuAt(100, 50);
    onlooker.click(XCB_BUTTON_INDEX_1, 10, 10);
    waitForClosed();
    choose(openMenuAt(100, 50), -10);
    waitUntil([&] { return done == std::vector<std::string>{"quit"}; });
}

TEST_F(TrayPopupTest, EndsTheProcessAWhileAfterTheMenuClosed) {
    openMenuAt(100, 50);
    let(linger + 100ms);  // the menu stays open for longer than the linger time
    EXPECT_TRUE(menu());
    onlooker.tap(escape);
    waitForClosed();
    EXPECT_EQ(windowProcesses().size(), 1U);
    waitUntil([] { return windowProcesses().empty(); });
}

TEST_F(TrayPopupTest, KeepsTheProcessForTheWholeWhileAfterTheLastMenu) {
    openMenuAt(100, 50);
    const auto process = windowProcesses();
    onlooker.tap(escape);
    waitForClosed();
    openMenuAt(100, 50);
    let(linger + 100ms);
    EXPECT_TRUE(menu());
    EXPECT_EQ(windowProcesses(), process);
}

TEST_F(TrayPopupTest, OpensNothingForALateRequest) {
    int closed = 0;
    const auto listening = window.listen([&](const ToResident&) { ++closed; });
    window.send(PopUpMenu{.x = 100, .y = 50, .asked = now() - 2'001ms, .menu = item.shown().menu});
    waitUntil([&] { return closed == 1; });
    let(100ms);
    EXPECT_FALSE(menu());
}

TEST_F(TrayPopupTest, OpensNothingIfTheProcessWasStoppedForTooLong) {
    openMenuAt(100, 50);
    onlooker.tap(escape);
    waitForClosed();
    const pid_t process = windowProcesses().front();
    ::kill(process, SIGSTOP);
    request(100, 50);
    let(2'100ms);
    ::kill(process, SIGCONT);
    waitForClosed();
    EXPECT_FALSE(menu());
    openMenuAt(100, 50);
}

TEST_F(TrayPopupTest, WorksAfterTheProcessWasKilledAndOpensNothingByItself) {
    openMenuAt(100, 50);
    ::kill(windowProcesses().front(), SIGKILL);
    waitUntil([&] { return !menu() && windowProcesses().empty(); });
    let(300ms);
    EXPECT_TRUE(windowProcesses().empty());
    choose(openMenuAt(100, 50), -10);
    waitUntil([&] { return done == std::vector<std::string>{"quit"}; });
}

}  // namespace
}  // namespace kovra
