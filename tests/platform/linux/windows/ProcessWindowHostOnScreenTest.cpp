#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <memory>
#include <string>

#include "BLE_kovra/platform/linux/session/ActivationToken.h"
#include "BLE_kovra/platform/linux/windows/ProcessAlertPresenter.h"
#include "BLE_kovra/platform/linux/windows/ProcessWindowHost.h"
#include "tests/fakes/FakeDesktop.h"
#include "tests/platform/linux/windows/WindowProcessOnScreen.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;

// A window and alerts, shown by the real window process.
class ProcessWindowHostOnScreenTest : public WindowProcessOnScreen {
  protected:
    static constexpr xcb_keycode_t escape = 9, enter = 36, space = 65;
    static constexpr const char* title = "The window";

    ProcessWindowHostOnScreenTest() { make(); }

    void make() {
        settings = host.makeWindow(content());
        settings->setTitle(title);
        settings->setStyleMask(WindowStyle::titled | WindowStyle::closable);
        settings->setContentSize({300, 200});
    }

    View content() {
        return {Toggle{isOn, [this](bool isNow) { set(isNow); }}, {{Text{"A toggle"}, {}, {}, {}}}, {}, {}};
    }
    void set(bool isNow) {
        isOn = isNow;
        ++changes;
        loop.async([this] { settings->setContent(content()); });
    }
    bool isSeen() { return onlooker.window(title).has_value(); }
    void open() {
        settings->makeKeyAndOrderFront();
        waitUntil([&] { return onlooker.hasKeyboard(title) && windowProcesses().size() == 1; });
    }
    AlertResponse run(const std::function<void()>& meanwhile) {
        loop.asyncAfter(1ms, [&] {
            waitUntil([&] { return onlooker.hasKeyboard("BLE-kovra"); });
            meanwhile();
        });
        token.provide("of the click");  // an alert that nobody requested ignores keys for a moment
        return alerts.runModal({"A message", "A text", {"OK", "Other"}});
    }

    ActivationToken token;
    FakeWorkspace workspace;
    ProcessWindowHost host{loop, window, token, workspace};
    ProcessAlertPresenter alerts{loop, window, token};
    bool isOn = false;
    int changes = 0;
    std::unique_ptr<Window> settings;
};

TEST_F(ProcessWindowHostOnScreenTest, TheWindowIsVisibleUntilTheUserClosesItAndCanBeReopened) {
    for (int i = 0; i < 3; ++i) {
        open();
        onlooker.tap(escape);
        waitUntil([&] { return !settings->isVisible() && !isSeen(); });
    }
    const auto process = windowProcesses();
    waitUntil([&] { return windowProcesses().empty(); });
    open();
    EXPECT_NE(windowProcesses(), process);
}

TEST_F(ProcessWindowHostOnScreenTest, TheWindowDisappearsWhenItIsDestroyed) {
    open();
    const auto process = windowProcesses();
    settings.reset();
    waitUntil([&] { return !isSeen(); });
    EXPECT_EQ(windowProcesses(), process);
    make();
    open();
    EXPECT_EQ(windowProcesses(), process);
}

TEST_F(ProcessWindowHostOnScreenTest, TheUsersInputIsReportedAndShown) {
    open();
    for (int times = 1; times <= 4; ++times) {
        onlooker.tap(space);
        waitUntil([&] { return changes == times; });
        EXPECT_EQ(isOn, times % 2 == 1);
    }
}

TEST_F(ProcessWindowHostOnScreenTest, AKilledProcessClosesTheWindowWhichCanBeReopened) {
    for (int i = 0; i < 3; ++i) {
        open();
        ::kill(windowProcesses().front(), SIGKILL);
        waitUntil([&] { return !settings->isVisible() && windowProcesses().empty(); });
    }
    let(200ms);
    EXPECT_TRUE(windowProcesses().empty());
    EXPECT_FALSE(isSeen());
}

TEST_F(ProcessWindowHostOnScreenTest, AnAlertReturnsTheUsersAnswer) {
    EXPECT_EQ(run([&] { onlooker.tap(enter); }), AlertResponse::firstButton);
    EXPECT_EQ(run([&] { onlooker.tap(escape); }), AlertResponse::aborted);
    EXPECT_EQ(run([&] { ::kill(windowProcesses().front(), SIGKILL); }), AlertResponse::aborted);
    EXPECT_EQ(run([&] { onlooker.tap(enter); }), AlertResponse::firstButton);
}

}  // namespace
}  // namespace kovra
