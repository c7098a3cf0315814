#include "BLE_kovra/platform/linux/ui/windows/AlertWindow.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QWindow>
#include <algorithm>
#include <optional>
#include <vector>

#include "tests/platform/linux/ui/Legible.h"
#include "tests/platform/linux/ui/QtRig.h"

namespace kovra {
namespace {

const Alert question{"Mute the trackpad for good?",
                     "It can be given back at any time: in the menu, in the settings, or with the keyboard.\n\n"
                     "Ask: someone@example.org",
                     {"Mute", "Not now"}};

class AlertWindowTest : public testing::Test {
  protected:
    void open(const Alert& alert) {
        const auto onAnswered = [this](std::optional<std::size_t> button) {
            answers.push_back(button);
            window->close();  // closing is not a second answer
        };
        window.emplace(alert, onAnswered, [this](const ToResident& message) { requests.push_back(message); });
        window->show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&*window));
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(window->windowHandle(), key, modifiers);
    }
    void click(const QWidget& widget) {
        QTest::mouseClick(window->windowHandle(), Qt::LeftButton, {}, widget.mapTo(&*window, widget.rect().center()));
    }
    QLabel& text(qsizetype position) { return *window->findChildren<QLabel*>().at(position); }
    QPushButton& button(qsizetype position) { return *window->findChildren<QPushButton*>().at(position); }

    const QtRig rig{};
    std::optional<AlertWindow> window;
    std::vector<std::optional<std::size_t>> answers;
    std::vector<ToResident> requests;
};
using Answers = std::vector<std::optional<std::size_t>>;

TEST_F(AlertWindowTest, ShowsItsTextsAndButtons) {
    open(question);
    EXPECT_EQ(window->windowTitle(), "BLE-kovra");
    EXPECT_EQ(text(0).text().toStdString(), question.messageText);
    EXPECT_TRUE(text(0).font().bold());
    EXPECT_EQ(text(1).text().toStdString(), question.informativeText);
    EXPECT_FALSE(text(1).font().bold());
    ASSERT_EQ(window->findChildren<QPushButton*>().size(), 2);
    EXPECT_EQ(button(0).text(), "Mute");
    EXPECT_EQ(button(1).text(), "Not now");
    EXPECT_LT(text(0).y(), text(1).y());
    EXPECT_LT(text(1).mapTo(&*window, QPoint(0, text(1).height())).y(), button(0).mapTo(&*window, QPoint()).y());
}

TEST_F(AlertWindowTest, ShowsTheApplicationIconOnTheLeft) {
    open(question);
    const QImage seen = window->grab().toImage();
    const QPoint text0 = text(0).mapTo(&*window, QPoint());
    int blue = 0;
    for (int y = 0; y < seen.height(); ++y) {
        for (int x = 0; x < text0.x(); ++x) blue += seen.pixelColor(x, y) == QColor(0x3A, 0x7B, 0xE0) ? 1 : 0;
    }
    EXPECT_GT(blue, 500);
}

TEST_F(AlertWindowTest, ShowsTheIconFourLinesTall) {
    open(question);
    const QImage seen = window->grab().toImage();
    int top = seen.height();
    int bottom = 0;
    for (int y = 0; y < seen.height(); ++y) {
        for (int x = 0; x < text(0).mapTo(&*window, QPoint()).x(); ++x) {
            if (seen.pixelColor(x, y) != QColor(0x3A, 0x7B, 0xE0)) continue;
            top = std::min(top, y);
            bottom = std::max(bottom, y);
        }
    }
    EXPECT_NEAR(bottom - top, 4 * window->fontMetrics().height(), window->fontMetrics().height() / 2);
}

TEST_F(AlertWindowTest, IsAModalDialogThatDoesNotStayAboveOtherWindows) {
    open(question);
    EXPECT_EQ(window->windowType(), Qt::Dialog);
    EXPECT_FALSE(window->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    EXPECT_EQ(window->windowModality(), Qt::WindowModal);
}

TEST_F(AlertWindowTest, ReturnAndEnterPressTheFirstButton) {
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
        open(question);
        press(key);
        EXPECT_FALSE(window->isVisible());
    }
    EXPECT_EQ(answers, (Answers{0, 0}));
}

TEST_F(AlertWindowTest, ReturnPressesTheFirstButtonWhereverTheFocusIs) {
    open(question);
    EXPECT_TRUE(button(0).isDefault());
    press(Qt::Key_Tab);
    ASSERT_EQ(window->focusWidget(), &button(1));
    EXPECT_TRUE(button(0).isDefault());
    press(Qt::Key_Return);
    EXPECT_EQ(answers, Answers{0});
}

TEST_F(AlertWindowTest, AHeldReturnKeyPressesNothing) {
    open(question);
    const auto held = [](QEvent::Type type) { return QKeyEvent(type, Qt::Key_Return, Qt::NoModifier, "\r", true); };
    for (int times = 0; times < 3; ++times) {
        QKeyEvent down = held(QEvent::KeyPress);
        QCoreApplication::sendEvent(window->windowHandle(), &down);
        QKeyEvent up = held(QEvent::KeyRelease);
        QCoreApplication::sendEvent(window->windowHandle(), &up);
    }
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(answers, Answers{});
}

TEST_F(AlertWindowTest, TabMovesBetweenTheButtonsAndSpacePressesTheFocusedOne) {
    open(question);
    EXPECT_EQ(window->focusWidget(), &button(0));
    press(Qt::Key_Tab);
    EXPECT_EQ(window->focusWidget(), &button(1));
    press(Qt::Key_Tab);
    EXPECT_EQ(window->focusWidget(), &button(0));
    press(Qt::Key_Tab, Qt::ShiftModifier);
    EXPECT_EQ(window->focusWidget(), &button(1));
    press(Qt::Key_Space);
    EXPECT_EQ(answers, Answers{1});
}

TEST_F(AlertWindowTest, AClickPressesEachButton) {
    for (const qsizetype position : {0, 1}) {
        open(question);
        click(button(position));
        EXPECT_FALSE(window->isVisible());
    }
    EXPECT_EQ(answers, (Answers{0, 1}));
}

TEST_F(AlertWindowTest, EscapeAndControlWAndTheCloseButtonOfTheFrameAnswerWithoutAButton) {
    open(question);
    press(Qt::Key_Escape);
    EXPECT_FALSE(window->isVisible());
    open(question);
    press(Qt::Key_W, Qt::ControlModifier);
    EXPECT_FALSE(window->isVisible());
    open(question);
    window->close();
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(answers, (Answers{std::nullopt, std::nullopt, std::nullopt}));
}

TEST_F(AlertWindowTest, ControlCommaRequestsTheSettingsAndControlQTheEnd) {
    open(question);
    press(Qt::Key_Comma, Qt::ControlModifier);
    press(Qt::Key_Q, Qt::ControlModifier);
    EXPECT_EQ(requests, (std::vector<ToResident>{SettingsWanted{}, QuitWanted{}}));
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(answers, Answers{});
}

TEST_F(AlertWindowTest, IsAnsweredOnce) {
    open(question);
    press(Qt::Key_Return);
    window->close();
    EXPECT_EQ(answers, Answers{0});
}

TEST_F(AlertWindowTest, ShowsTextsLiterally) {
    open({"a & b <b>c</b>_d", "&x <i>y</i>\n<br>z", {"&Yes && <b>", "_No"}});
    EXPECT_EQ(text(0).text(), "a & b <b>c</b>_d");
    for (const qsizetype position : {0, 1}) EXPECT_EQ(text(position).textFormat(), Qt::PlainText);
    EXPECT_EQ(button(0).text(), "&&Yes &&&& <b>");
    EXPECT_TRUE(button(0).shortcut().isEmpty());
    press(Qt::Key_Y, Qt::AltModifier);
    press(Qt::Key_X, Qt::AltModifier);
    EXPECT_EQ(answers, Answers{});
}

TEST_F(AlertWindowTest, WrapsItsTextsWithoutCuttingThem) {
    for (const double size : {9.0, 18.0, 27.0}) {
        QFont font = QApplication::font();
        font.setPointSizeF(size);
        QApplication::setFont(font);
        std::string manyWords;
        for (int count = 0; count < 60; ++count) manyWords += "слово ";
        for (const Alert& alert : {question, Alert{manyWords, manyWords + "\n\n" + manyWords, {"Да"}},
                                   Alert{"BLE-kovra 1.0", "", {"OK", "Ein Knopf mit einem langen Titel"}}}) {
            open(alert);
            for (const QLabel* label : window->findChildren<QLabel*>())
                EXPECT_TRUE(label->text().isEmpty() || isWhole(*label));
            for (const QPushButton* each : window->findChildren<QPushButton*>()) EXPECT_TRUE(isWhole(*each));
            EXPECT_LE(window->width(), window->screen()->availableSize().width());
        }
    }
}

TEST_F(AlertWindowTest, WidensItsLinesBeforeItIsTallerThanTheScreen) {
    QFont font = QApplication::font();
    font.setPointSizeF(20);
    QApplication::setFont(font);
    const auto lines = [](int words) {
        std::string text;
        for (int count = 0; count < words; ++count) text += "слово ";
        return text;
    };
    open({"Слово", lines(40), {"Да"}});
    const QSize usual = window->size();
    const int usualLine = text(1).width();
    const QSize screen = window->screen()->availableSize();
    const int rest = usual.height() - text(1).height();
    for (const int words : {80, 88}) {
        open({"Слово", lines(words), {"Да"}});
        ASSERT_GT(rest + setText(text(1).text(), text(1).font(), usualLine).height, screen.height()) << words;
        EXPECT_GT(window->width(), usual.width()) << words;
        EXPECT_LE(window->width(), screen.width() * 9 / 10) << words;
        EXPECT_LT(window->height(), screen.height() - window->fontMetrics().height()) << words;  // a line for the frame
        EXPECT_TRUE(isWhole(text(1))) << words;
        EXPECT_TRUE(isWhole(button(0))) << words;
    }
}

TEST_F(AlertWindowTest, LeavesALineBetweenTheTextsAndTheButtons) {
    open(question);
    const int below = text(1).mapTo(&*window, QPoint(0, text(1).height())).y();
    EXPECT_EQ(button(0).mapTo(&*window, QPoint()).y() - below, window->fontMetrics().height());
}

TEST_F(AlertWindowTest, GrowsWithTheDesktopFont) {
    open(question);
    const QSize before = window->size();
    QFont font = QApplication::font();
    font.setPointSizeF(2 * font.pointSizeF());
    QApplication::setFont(font);
    ASSERT_TRUE(QTest::qWaitFor([&] { return window->height() > before.height() * 3 / 2; }));
    EXPECT_TRUE(isWhole(text(0)));
    EXPECT_TRUE(isWhole(text(1)));
}

TEST_F(AlertWindowTest, CannotBeResized) {
    open(question);
    EXPECT_EQ(window->minimumSize(), window->maximumSize());
    EXPECT_EQ(window->minimumSize(), window->size());
    EXPECT_FALSE(window->windowFlags().testFlag(Qt::WindowMaximizeButtonHint));
}

TEST_F(AlertWindowTest, IsRestoredIfTheTitleBarMaximizesIt) {
    open(question);
    const QSize size = window->size();
    window->windowHandle()->setWindowStates(Qt::WindowMaximized);
    EXPECT_TRUE(QTest::qWaitFor([&] { return window->windowHandle()->windowStates() == Qt::WindowNoState; }));
    EXPECT_EQ(window->windowState(), Qt::WindowNoState);
    EXPECT_EQ(window->size(), size);
}

TEST_F(AlertWindowTest, ItsTextsCanBeCopied) {
    open(question);
    const QPoint inAddress = text(1).mapTo(&*window, QPoint(text(1).fontMetrics().horizontalAdvance("Ask: some"),
                                                            text(1).height() - text(1).fontMetrics().height() / 2));
    QTest::mouseDClick(window->windowHandle(), Qt::LeftButton, {}, inAddress);
    EXPECT_TRUE(text(1).hasSelectedText());
    QTest::keySequence(window->windowHandle(), QKeySequence::Copy);
    EXPECT_EQ(QApplication::clipboard()->text(), "someone");
    // The Return key still works.
    press(Qt::Key_Return);
    EXPECT_EQ(answers, Answers{0});
}

TEST_F(AlertWindowTest, EscapeClosesItWhileTextIsSelected) {
    open(question);
    QTest::mouseDClick(window->windowHandle(), Qt::LeftButton, {}, text(0).mapTo(&*window, QPoint(5, 5)));
    EXPECT_TRUE(text(0).hasSelectedText());
    press(Qt::Key_Escape);
    EXPECT_EQ(answers, Answers{std::nullopt});
}

TEST_F(AlertWindowTest, HasNoContextMenu) {
    open(question);
    QTest::mouseClick(window->windowHandle(), Qt::RightButton, {}, text(1).mapTo(&*window, QPoint(5, 5)));
    QCoreApplication::processEvents();
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
}

TEST_F(AlertWindowTest, IsAnAlertWithNamesToScreenReaders) {
    open(question);
    QAccessibleInterface* alert = QAccessible::queryAccessibleInterface(&*window);
    ASSERT_NE(alert, nullptr);
    EXPECT_EQ(alert->role(), QAccessible::AlertMessage);
    EXPECT_EQ(alert->text(QAccessible::Name).toStdString(), question.messageText);
    EXPECT_EQ(alert->text(QAccessible::Description).toStdString(), question.informativeText);
    QAccessibleInterface* first = QAccessible::queryAccessibleInterface(&button(0));
    EXPECT_EQ(first->role(), QAccessible::Button);
    EXPECT_EQ(first->text(QAccessible::Name), "Mute");
    EXPECT_TRUE(first->state().defaultButton);
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&text(1))->text(QAccessible::Name).toStdString(),
              question.informativeText);
}

}  // namespace
}  // namespace kovra
