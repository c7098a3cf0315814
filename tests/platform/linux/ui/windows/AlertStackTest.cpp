#include "BLE_kovra/platform/linux/ui/windows/AlertStack.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QMenu>
#include <QPushButton>
#include <QShortcut>
#include <QTest>
#include <QWindow>
#include <optional>
#include <variant>
#include <vector>

#include "tests/platform/linux/ui/QtRig.h"

namespace kovra {
namespace {

ShowAlerts::Open numbered(std::uint64_t number) {
    return {number, "", {"Alert " + std::to_string(number), "Below it", {"First", "Second"}}};
}

// The alerts' windows that are to be seen.
std::vector<AlertWindow*> seen() {
    std::vector<AlertWindow*> windows;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        auto* window = dynamic_cast<AlertWindow*>(widget);
        if (window != nullptr && window->isVisible()) windows.push_back(window);
    }
    return windows;
}

AlertWindow* seen(std::uint64_t number) {
    for (AlertWindow* window : seen()) {
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

    const QtRig rig;
    std::vector<AlertAnswered> answers;
    AlertStack stack{[this](const ToResident& message) { answers.push_back(std::get<AlertAnswered>(message)); }};
};
using Answers = std::vector<AlertAnswered>;

TEST_F(AlertStackTest, ShowsAnAlertInFrontAndTellsItsAnswer) {
    show({7});
    ASSERT_NE(seen(7), nullptr);
    EXPECT_TRUE(isActive(*seen(7)));
    QTest::keyClick(seen(7)->windowHandle(), Qt::Key_Return);
    EXPECT_EQ(answers, (Answers{{7, 0}}));
    EXPECT_EQ(seen(7), nullptr);
}

TEST_F(AlertStackTest, TellsThatAnAlertWasClosed) {
    show({3});
    QTest::keyClick(seen(3)->windowHandle(), Qt::Key_Escape);
    EXPECT_EQ(answers, (Answers{{3, std::nullopt}}));
}

TEST_F(AlertStackTest, TheTopmostOfThreeTakesInputAndThenTheOneBelow) {
    show({1});
    show({1, 2});
    show({1, 2, 3});
    EXPECT_EQ(seen().size(), 3U);
    EXPECT_TRUE(isActive(*seen(3)));
    for (const std::uint64_t covered : {1U, 2U}) {
        click(*seen(covered), 0);
        QTest::keyClick(seen(covered)->windowHandle(), Qt::Key_Escape);
        QTest::keyClick(seen(covered)->windowHandle(), Qt::Key_Return);
        EXPECT_FALSE(seen(covered)->windowHandle()->close());
    }
    EXPECT_EQ(answers, Answers{});
    click(*seen(3), 1);
    EXPECT_EQ(answers, (Answers{{3, 1}}));
    show({1, 2});
    EXPECT_TRUE(isActive(*seen(2)));
    click(*seen(1), 0);
    EXPECT_EQ(answers.size(), 1U);
    QTest::keyClick(seen(2)->windowHandle(), Qt::Key_Return);
    show({1});
    EXPECT_TRUE(isActive(*seen(1)));
    QTest::keyClick(seen(1)->windowHandle(), Qt::Key_Escape);
    EXPECT_EQ(answers, (Answers{{3, 1}, {2, 0}, {1, std::nullopt}}));
    EXPECT_TRUE(seen().empty());
}

TEST_F(AlertStackTest, AnAlertThatIsNotNamedAnyMoreGoesWithoutAnAnswer) {
    show({1, 2});
    show({1});
    EXPECT_EQ(seen(2), nullptr);
    EXPECT_TRUE(isActive(*seen(1)));
    show({});
    EXPECT_TRUE(seen().empty());
    EXPECT_EQ(answers, Answers{});
}

TEST_F(AlertStackTest, OneFromBelowMayGoToo) {
    show({1, 2, 3});
    show({1, 3});
    EXPECT_EQ(seen().size(), 2U);
    EXPECT_TRUE(isActive(*seen(3)));
    EXPECT_EQ(answers, Answers{});
}

TEST_F(AlertStackTest, AnAnsweredAlertStaysAwayThoughItIsStillNamed) {
    show({1, 2});
    QTest::keyClick(seen(2)->windowHandle(), Qt::Key_Return);
    show({1, 2});
    EXPECT_EQ(seen(2), nullptr);
    EXPECT_TRUE(isActive(*seen(1)));
    show({1});
    show({1, 3});
    EXPECT_TRUE(isActive(*seen(3)));
}

TEST_F(AlertStackTest, WhatIsShownAlreadyStaysTheSameWindow) {
    show({1, 2});
    const AlertWindow* before = seen(2);
    QTest::keyClick(seen(2)->windowHandle(), Qt::Key_Tab);
    const QWidget* focus = before->focusWidget();
    show({1, 2});
    EXPECT_EQ(seen(2), before);
    EXPECT_EQ(before->focusWidget(), focus);
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

TEST_F(AlertStackOverWindowTest, KeepsInputFromIt) {
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
    EXPECT_TRUE(isActive(*seen(1)));
    show({});
    clickTick();
    EXPECT_FALSE(tick.isChecked());
}

TEST_F(AlertStackOverWindowTest, TakesTheKeyboardBackWhenTheWindowComesToTheFront) {
    show({1});
    ASSERT_TRUE(isActive(*seen(1)));
    window.raise();
    window.activateWindow();
    QCoreApplication::processEvents();
    EXPECT_TRUE(isActive(*seen(1)));
}

TEST_F(AlertStackOverWindowTest, AClickThatHasBegunMayEnd) {
    QTest::mousePress(window.windowHandle(), Qt::LeftButton, {}, QPoint(10, 15));
    show({1});
    QTest::mouseRelease(window.windowHandle(), Qt::LeftButton, {}, QPoint(10, 15));
    EXPECT_FALSE(tick.isDown());
}

TEST_F(AlertStackOverWindowTest, LeavesMenusTheirInput) {
    show({1});
    QMenu menu;
    bool isChosen = false;
    QObject::connect(menu.addAction("Choose"), &QAction::triggered, [&] { isChosen = true; });
    menu.popup(QPoint(0, 0));
    QTest::mouseClick(menu.windowHandle(), Qt::LeftButton, {}, menu.actionGeometry(menu.actions()[0]).center());
    EXPECT_TRUE(isChosen);
    EXPECT_EQ(answers, Answers{});
}

}  // namespace
}  // namespace kovra
