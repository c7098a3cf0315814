#include "BLE_kovra/platform/linux/ui/windows/AlertStack.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QMenu>
#include <QPushButton>
#include <QShortcut>
#include <QSlider>
#include <QTest>
#include <QWheelEvent>
#include <QWindow>
#include <chrono>
#include <optional>
#include <variant>
#include <vector>

#include "tests/platform/linux/ui/QtRig.h"

namespace kovra {
namespace {

using std::chrono::milliseconds;

// An alert that the user has clicked for.
ShowAlerts::Open numbered(std::uint64_t number) {
    return {number, "token", {"Alert " + std::to_string(number), "Below it", {"First", "Second"}}};
}

std::vector<AlertWindow*> visible() {
    std::vector<AlertWindow*> windows;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        auto* window = dynamic_cast<AlertWindow*>(widget);
        if (window != nullptr && window->isVisible()) windows.push_back(window);
    }
    return windows;
}

AlertWindow* visible(std::uint64_t number) {
    for (AlertWindow* window : visible()) {
        if (window->accessibleName() == "Alert " + QString::number(number)) return window;
    }
    return nullptr;
}

class AlertStackTest : public testing::Test {
  protected:
    void show(const std::vector<std::uint64_t>& numbers) {
        ShowAlerts alerts;
        for (const std::uint64_t number : numbers) alerts.alerts.push_back(numbered(number));
        stack.show(alerts);
        QCoreApplication::processEvents();
    }
    static bool isActive(const QWidget& window) { return QTest::qWaitForWindowActive(const_cast<QWidget*>(&window)); }
    static void click(QWidget& window, qsizetype button) {
        const QWidget& widget = *window.findChildren<QPushButton*>().at(button);
        QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, widget.mapTo(&window, widget.rect().center()));
    }

    static void press(Qt::Key key) { QTest::keyClick(visible(1)->windowHandle(), key); }

    const QtRig rig{};
    std::vector<AlertAnswered> answers;
    std::vector<ToResident> requests;
    std::chrono::steady_clock::time_point now;
    AlertStack stack{[this](const ToResident& message) {
                         if (const auto* answer = std::get_if<AlertAnswered>(&message))
                             answers.push_back(*answer);
                         else
                             requests.push_back(message);
                     },
                     [this] { return now; }};
};
using Answered = std::vector<AlertAnswered>;

TEST_F(AlertStackTest, ShowsAnAlertInFrontAndSendsItsAnswer) {
    show({7});
    ASSERT_NE(visible(7), nullptr);
    EXPECT_TRUE(isActive(*visible(7)));
    QTest::keyClick(visible(7)->windowHandle(), Qt::Key_Return);
    EXPECT_EQ(answers, (Answered{{7, 0}}));
    EXPECT_EQ(visible(7), nullptr);
}

TEST_F(AlertStackTest, SendsThatAnAlertWasClosed) {
    show({3});
    QTest::keyClick(visible(3)->windowHandle(), Qt::Key_Escape);
    EXPECT_EQ(answers, (Answered{{3, std::nullopt}}));
}

TEST_F(AlertStackTest, OnlyTheTopmostOfThreeAlertsTakesInput) {
    show({1});
    show({1, 2});
    show({1, 2, 3});
    EXPECT_EQ(visible().size(), 3U);
    EXPECT_TRUE(isActive(*visible(3)));
    for (const std::uint64_t covered : {1U, 2U}) {
        click(*visible(covered), 0);
        QTest::keyClick(visible(covered)->windowHandle(), Qt::Key_Escape);
        QTest::keyClick(visible(covered)->windowHandle(), Qt::Key_Return);
        EXPECT_FALSE(visible(covered)->windowHandle()->close());
    }
    EXPECT_EQ(answers, Answered{});
    click(*visible(3), 1);
    EXPECT_EQ(answers, (Answered{{3, 1}}));
    show({1, 2});
    EXPECT_TRUE(isActive(*visible(2)));
    click(*visible(1), 0);
    EXPECT_EQ(answers.size(), 1U);
    QTest::keyClick(visible(2)->windowHandle(), Qt::Key_Return);
    show({1});
    EXPECT_TRUE(isActive(*visible(1)));
    QTest::keyClick(visible(1)->windowHandle(), Qt::Key_Escape);
    EXPECT_EQ(answers, (Answered{{3, 1}, {2, 0}, {1, std::nullopt}}));
    EXPECT_TRUE(visible().empty());
}

TEST_F(AlertStackTest, RemovesAnAlertThatIsNoLongerListedWithoutAnAnswer) {
    show({1, 2});
    show({1});
    EXPECT_EQ(visible(2), nullptr);
    EXPECT_TRUE(isActive(*visible(1)));
    show({});
    EXPECT_TRUE(visible().empty());
    EXPECT_EQ(answers, Answered{});
}

TEST_F(AlertStackTest, RemovesACoveredAlert) {
    show({1, 2, 3});
    show({1, 3});
    EXPECT_EQ(visible().size(), 2U);
    EXPECT_TRUE(isActive(*visible(3)));
    EXPECT_EQ(answers, Answered{});
}

TEST_F(AlertStackTest, KeepsAnAnsweredAlertHiddenWhileItIsStillListed) {
    show({1, 2});
    QTest::keyClick(visible(2)->windowHandle(), Qt::Key_Return);
    show({1, 2});
    EXPECT_EQ(visible(2), nullptr);
    EXPECT_TRUE(isActive(*visible(1)));
    show({1});
    show({1, 3});
    EXPECT_TRUE(isActive(*visible(3)));
}

TEST_F(AlertStackTest, KeepsTheWindowOfAnAlertThatIsAlreadyShown) {
    show({1, 2});
    const AlertWindow* before = visible(2);
    QTest::keyClick(visible(2)->windowHandle(), Qt::Key_Tab);
    const QWidget* focus = before->focusWidget();
    show({1, 2});
    EXPECT_EQ(visible(2), before);
    EXPECT_EQ(before->focusWidget(), focus);
}

TEST_F(AlertStackTest, BringsAnOpenAlertToTheFrontOnRequest) {
    show({1});
    visible(1)->showMinimized();
    show({1});
    EXPECT_TRUE(visible(1)->isMinimized());
    stack.show({.alerts = {numbered(1)}, .front = 1});
    EXPECT_FALSE(visible(1)->isMinimized());
    EXPECT_TRUE(isActive(*visible(1)));
    EXPECT_EQ(visible().size(), 1U);
}

TEST_F(AlertStackTest, RaisesALowerAlertThatIsListedLast) {
    show({1, 2});
    AlertWindow* const first = visible(1);
    stack.show({.alerts = {numbered(2), numbered(1)}, .front = 1});
    EXPECT_EQ(visible(1), first);
    EXPECT_EQ(visible().size(), 2U);
    EXPECT_TRUE(isActive(*first));
    click(*visible(2), 0);
    EXPECT_EQ(answers, Answered{});
    QTest::keyClick(first->windowHandle(), Qt::Key_Return);
    EXPECT_EQ(answers, (Answered{{1, 0}}));
}

TEST_F(AlertStackTest, SendsTheRequestsOfItsKeys) {
    show({1});
    QTest::keyClick(visible(1)->windowHandle(), Qt::Key_Comma, Qt::ControlModifier);
    EXPECT_EQ(requests, (std::vector<ToResident>{SettingsWanted{}}));
    QTest::keyClick(visible(1)->windowHandle(), Qt::Key_Q, Qt::ControlModifier);
    EXPECT_EQ(requests, (std::vector<ToResident>{SettingsWanted{}, QuitWanted{}}));
    EXPECT_EQ(answers, Answered{});
    QTest::keyClick(visible(1)->windowHandle(), Qt::Key_W, Qt::ControlModifier);
    EXPECT_EQ(answers, (Answered{{1, std::nullopt}}));
}

// Somebody may be typing in another program when an alert opens that nobody has requested.
class AlertStackUnrequestedTest : public AlertStackTest {
  protected:
    AlertStackUnrequestedTest() {
        alert.activationToken.clear();
        stack.show({.alerts = {alert}});
        EXPECT_TRUE(isActive(*visible(1)));
    }

    ShowAlerts::Open alert = numbered(1);
};

TEST_F(AlertStackUnrequestedTest, IgnoresKeysForHalfASecondFromItsFirstActivation) {
    now += milliseconds(499);
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Space, Qt::Key_Escape}) press(key);
    QTest::keyClick(visible(1)->windowHandle(), Qt::Key_Q, Qt::ControlModifier);
    EXPECT_EQ(answers, Answered{});
    EXPECT_TRUE(requests.empty());
    now += milliseconds(1);
    press(Qt::Key_Return);
    EXPECT_EQ(answers, (Answered{{1, 0}}));
}

TEST_F(AlertStackUnrequestedTest, AcceptsKeysAtOnceAtALaterActivation) {
    now += milliseconds(500);
    show({1, 2});
    show({1});
    ASSERT_TRUE(isActive(*visible(1)));
    press(Qt::Key_Escape);
    EXPECT_EQ(answers, (Answered{{1, std::nullopt}}));
}

TEST_F(AlertStackUnrequestedTest, AcceptsClicksAtOnce) {
    click(*visible(1), 1);
    EXPECT_EQ(answers, (Answered{{1, 1}}));
}

TEST_F(AlertStackUnrequestedTest, AcceptsKeysAtOnceIfTheUserRequestsIt) {
    stack.show({.alerts = {numbered(1)}, .front = 1});
    press(Qt::Key_Return);
    EXPECT_EQ(answers, (Answered{{1, 0}}));
}

TEST_F(AlertStackTest, AcceptsKeysAtOnceAfterAClickInAnotherWindowOfTheProgram) {
    QWidget menu;
    menu.show();
    QTest::mouseClick(menu.windowHandle(), Qt::LeftButton);
    now += milliseconds(1999);
    ShowAlerts::Open alert = numbered(1);
    alert.activationToken.clear();
    stack.show({.alerts = {alert}});
    press(Qt::Key_Return);
    EXPECT_EQ(answers, (Answered{{1, 0}}));
}

class AlertStackOverWindowTest : public AlertStackTest {
  protected:
    AlertStackOverWindowTest() {
        window.resize(200, 100);
        tick.setGeometry(0, 0, 200, 30);
        QObject::connect(&shortcut, &QShortcut::activated, [this] { ++closedByKey; });
        window.show();
    }
    void clickTick() { QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, QPoint(10, 15)); }

    QWidget window;
    QCheckBox tick{"Tick", &window};
    QShortcut shortcut{QKeySequence("Ctrl+W"), &window};
    int closedByKey = 0;
};

TEST_F(AlertStackOverWindowTest, BlocksInputToTheWindow) {
    clickTick();
    ASSERT_TRUE(tick.isChecked());
    show({1});
    clickTick();
    tick.setFocus();
    QTest::keyClick(window.windowHandle(), Qt::Key_Space);
    QTest::keyClick(window.windowHandle(), Qt::Key_W, Qt::ControlModifier);
    EXPECT_TRUE(tick.isChecked());
    EXPECT_EQ(closedByKey, 0);
    EXPECT_FALSE(window.windowHandle()->close());
    EXPECT_TRUE(window.isVisible());
    EXPECT_TRUE(isActive(*visible(1)));
    show({});
    clickTick();
    EXPECT_FALSE(tick.isChecked());
}

TEST_F(AlertStackOverWindowTest, BlocksTheWheel) {
    QSlider slider(&window);
    slider.setGeometry(0, 40, 200, 30);
    slider.show();
    const auto turnWheel = [&] {
        QWheelEvent turn(QPointF(100, 55), window.mapToGlobal(QPointF(100, 55)), {}, QPoint(0, 120), Qt::NoButton,
                         Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(window.windowHandle(), &turn);
    };
    turnWheel();
    const int before = slider.value();
    ASSERT_NE(before, 0);
    show({1});
    turnWheel();
    EXPECT_EQ(slider.value(), before);
}

TEST_F(AlertStackOverWindowTest, TakesTheFocusBackWhenTheWindowComesToTheFront) {
    show({1});
    ASSERT_TRUE(isActive(*visible(1)));
    window.raise();
    window.activateWindow();
    QCoreApplication::processEvents();
    EXPECT_TRUE(isActive(*visible(1)));
}

TEST_F(AlertStackOverWindowTest, FinishesAClickThatBeganBeforeTheAlert) {
    QTest::mousePress(window.windowHandle(), Qt::LeftButton, {}, QPoint(10, 15));
    show({1});
    QTest::mouseRelease(window.windowHandle(), Qt::LeftButton, {}, QPoint(10, 15));
    EXPECT_FALSE(tick.isDown());
}

TEST_F(AlertStackOverWindowTest, DoesNotBlockInputToMenus) {
    show({1});
    QMenu menu;
    bool isChosen = false;
    QObject::connect(menu.addAction("Choose"), &QAction::triggered, [&] { isChosen = true; });
    menu.popup(QPoint(0, 0));
    // From version 6.8, Qt closes a new menu that is clicked before the pointer has moved on it.
    const QPoint item = menu.actionGeometry(menu.actions()[0]).center();
    for (int step = 1; step <= 10; ++step) QTest::mouseMove(menu.windowHandle(), item + QPoint(step % 2, 0));
    QTest::mouseClick(menu.windowHandle(), Qt::LeftButton, {}, item);
    EXPECT_TRUE(isChosen);
    EXPECT_EQ(answers, Answered{});
}

}  // namespace
}  // namespace kovra
