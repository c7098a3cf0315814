#include "BLE_kovra/platform/linux/ui/windows/ViewWindow.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QCheckBox>
#include <QPalette>
#include <QRadioButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>
#include <QWindow>
#include <algorithm>
#include <tuple>
#include <variant>

#include "BLE_kovra/platform/linux/ui/style/Points.h"
#include "tests/platform/linux/ui/Luminance.h"
#include "tests/platform/linux/ui/QtRig.h"
#include "tests/platform/linux/ui/SampleView.h"
#include "tests/platform/linux/ui/Themes.h"

namespace kovra {
namespace {

class ViewWindowTest : public testing::Test {
  protected:
    ViewWindowTest() {
        state.title = "BLE-kovra";
        state.styleMask = 7;
        state.contentSize = {440, 480};
        state.front = 1;
        content.devices = sample::mice(50);
    }

    void show() {
        state.content = sample::view(content);
        window.showWindow(state);
    }
    void bringToFront() {
        ++state.front;
        show();
    }
    static void setFontSize(double size) {
        QFont font = QApplication::font();
        font.setPointSizeF(size);
        QApplication::setFont(font);
        QCoreApplication::processEvents();
    }
    void key(int key, Qt::KeyboardModifiers modifiers = {}) { QTest::keyClick(&window, Qt::Key(key), modifiers); }
    template <typename Message>
    std::vector<Message> sentOf() const {
        std::vector<Message> found;
        for (const ToResident& each : sent) {
            if (const auto* message = std::get_if<Message>(&each)) found.push_back(*message);
        }
        return found;
    }
    bool isSent(const WindowPlace& place) const {
        return QTest::qWaitFor([&] {
            const auto placed = sentOf<WindowPlaced>();
            return !placed.empty() && placed.back().place == place;
        });
    }
    // Returns the color of the groove in a picture of the scroll bar, while the list shows its beginning.
    static QRgb groove(const QImage& bar) { return bar.pixel(bar.width() / 2, bar.height() * 3 / 4); }
    QScrollBar& scrollBar() { return *window.findChild<QScrollArea*>()->verticalScrollBar(); }

    const QtRig qt;
    std::vector<ToResident> sent;
    ViewWindow window{[this](const ToResident& message) { sent.push_back(message); }};
    ShowWindow state;
    sample::Content content;
};

TEST_F(ViewWindowTest, HasTheGivenTitleAndSize) {
    show();
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(window.windowTitle(), "BLE-kovra");
    EXPECT_EQ(window.size(), QSize(440, 480));
    EXPECT_EQ(window.minimumSize(), window.maximumSize());
}

TEST_F(ViewWindowTest, CanOnlyBeClosedAndMinimized) {
    show();
    const Qt::WindowFlags flags = window.windowFlags();
    EXPECT_TRUE(flags.testFlag(Qt::WindowTitleHint));
    EXPECT_TRUE(flags.testFlag(Qt::WindowCloseButtonHint));
    EXPECT_TRUE(flags.testFlag(Qt::WindowMinimizeButtonHint));
    EXPECT_FALSE(flags.testFlag(Qt::WindowMaximizeButtonHint));
    EXPECT_FALSE(flags.testFlag(Qt::WindowContextHelpButtonHint));
}

TEST_F(ViewWindowTest, IsRestoredIfTheTitleBarMaximizesIt) {
    show();
    window.windowHandle()->setWindowStates(Qt::WindowMaximized);
    EXPECT_TRUE(QTest::qWaitFor([&] { return window.windowHandle()->windowStates() == Qt::WindowNoState; }));
    EXPECT_EQ(window.windowState(), Qt::WindowNoState);
    EXPECT_EQ(window.size(), QSize(440, 480));
}

TEST_F(ViewWindowTest, IsCenteredOnTheScreenAtFirst) {
    show();
    const QPoint off = window.geometry().center() - window.screen()->availableGeometry().center();
    EXPECT_LE(off.manhattanLength(), 8);  // the frame may be asymmetric
}

TEST_F(ViewWindowTest, IsHiddenByEveryWayOfClosingIt) {
    show();
    key(Qt::Key_Escape);
    EXPECT_FALSE(window.isVisible());
    bringToFront();
    EXPECT_TRUE(window.isVisible());
    key(Qt::Key_W, Qt::ControlModifier);
    EXPECT_FALSE(window.isVisible());
    bringToFront();
    window.close();
    EXPECT_FALSE(window.isVisible());
    const auto closed = sentOf<WindowClosed>();
    ASSERT_EQ(closed.size(), 3U);
    EXPECT_EQ(closed[0].front, 1U);
    EXPECT_EQ(closed[1].front, 2U);
    EXPECT_EQ(closed[2].front, 3U);
    EXPECT_TRUE(sentOf<QuitWanted>().empty());
}

TEST_F(ViewWindowTest, StaysHiddenUntilItIsBroughtToTheFront) {
    show();
    window.close();
    content.isMuted = true;
    show();
    EXPECT_FALSE(window.isVisible());
    bringToFront();
    EXPECT_TRUE(window.isVisible());
}

TEST_F(ViewWindowTest, SendsTheRequestToQuit) {
    show();
    key(Qt::Key_Q, Qt::ControlModifier);
    EXPECT_EQ(sentOf<QuitWanted>().size(), 1U);
    EXPECT_TRUE(window.isVisible());
}

TEST_F(ViewWindowTest, SendsTheRequestForTheSettings) {
    show();
    key(Qt::Key_Comma, Qt::ControlModifier);
    EXPECT_EQ(sentOf<SettingsWanted>().size(), 1U);
    EXPECT_TRUE(window.isVisible());
}

TEST_F(ViewWindowTest, NumbersChangesAfterTheLastAcknowledgedOne) {
    state.acknowledged = 7;
    show();
    auto* box = window.findChild<QCheckBox*>();
    box->click();
    box->click();
    EXPECT_EQ(sentOf<ControlChanged>(), (std::vector<ControlChanged>{{8, {"1"}, false}, {9, {"1"}, true}}));
}

TEST_F(ViewWindowTest, HasNoOtherShortcuts) {
    show();
    for (int each = Qt::Key_A; each <= Qt::Key_Z; ++each) {
        key(each);
        key(each, Qt::AltModifier);
        if (each != Qt::Key_W && each != Qt::Key_Q) key(each, Qt::ControlModifier);
    }
    EXPECT_TRUE(sent.empty());
    EXPECT_TRUE(window.isVisible());
}

TEST_F(ViewWindowTest, KeepsItsPlaceWhileItIsHidden) {
    show();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    window.move(30, 40);
    scrollBar().setValue(333);
    const WindowPlace there{Point{30, 40}, false, 333};
    EXPECT_TRUE(isSent(there));
    window.close();
    EXPECT_EQ(sentOf<WindowClosed>().at(0).place, there);
    content.isMuted = true;
    show();
    bringToFront();
    EXPECT_EQ(window.pos(), QPoint(30, 40));
    EXPECT_EQ(scrollBar().value(), 333);
}

TEST_F(ViewWindowTest, SendsItsPlaceOnceItStopsMoving) {
    show();
    for (int i = 1; i <= 20; ++i) {
        window.move(i, 2 * i);
        scrollBar().setValue(3 * i);
        QCoreApplication::processEvents();
    }
    EXPECT_TRUE(isSent({Point{20, 40}, false, 60}));
    EXPECT_EQ(sentOf<WindowPlaced>().size(), 1U);
}

TEST_F(ViewWindowTest, KeepsItsPreviousPlaceIfItIsClosedWhileMoving) {
    state.place = {Point{50, 60}, false, 0};
    show();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    window.move(70, 80);
    scrollBar().setValue(9);
    window.close();
    EXPECT_EQ(sentOf<WindowClosed>().at(0).place, (WindowPlace{Point{50, 60}, false, 9}));
}

TEST_F(ViewWindowTest, RestoresItsPlace) {
    state.place = {Point{50, 60}, false, 123};
    show();
    EXPECT_EQ(window.pos(), QPoint(50, 60));
    EXPECT_EQ(scrollBar().value(), 123);
    EXPECT_FALSE(window.isMinimized());
    QTest::qWait(500);
    EXPECT_TRUE(sent.empty());
}

TEST_F(ViewWindowTest, StaysMinimizedUntilItIsBroughtToTheFront) {
    state.place.isMinimised = true;
    show();
    EXPECT_TRUE(window.isMinimized());
    EXPECT_TRUE(window.isVisible());
    bringToFront();
    EXPECT_FALSE(window.isMinimized());
    EXPECT_TRUE(QTest::qWaitFor([this] { return !sentOf<WindowPlaced>().empty(); }));
    EXPECT_FALSE(sentOf<WindowPlaced>().at(0).place.isMinimised);
}

TEST_F(ViewWindowTest, IgnoresALaterPlace) {
    show();
    const QPoint before = window.pos();
    state.place = {Point{50, 60}, true, 123};
    bringToFront();
    EXPECT_EQ(window.pos(), before);
    EXPECT_FALSE(window.isMinimized());
    EXPECT_EQ(scrollBar().value(), 0);
}

TEST_F(ViewWindowTest, MovesOntoAnotherScreenIfItsOwnIsDisconnected) {
    state.place.position = Point{-5000, 100};
    show();
    EXPECT_TRUE(window.screen()->geometry().contains(window.geometry()));
}

TEST_F(ViewWindowTest, MovesBackIfTooLittleOfItIsOnTheScreenToDragIt) {
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    for (const int visible : {39, 40}) {
        for (const int left : {screen.right() + 1 - visible, screen.left() + visible - pixels(440)}) {
            ViewWindow another([](const ToResident&) {});
            state.content = sample::view(content);
            state.place.position = Point{double(left), 100};
            another.showWindow(state);
            EXPECT_EQ(screen.contains(another.geometry()), visible < 40) << visible << " from " << left;
        }
    }
}

TEST_F(ViewWindowTest, ScalesWhenTheFontChanges) {
    show();
    setFontSize(16.5);
    EXPECT_EQ(window.width(), 660);
    const auto* row = window.findChild<QScrollArea*>()->findChild<QCheckBox*>();
    EXPECT_GT(row->height(), 20);
}

TEST_F(ViewWindowTest, IsNoTallerThanTheScreenWhileTheListCanShrink) {
    show();
    setFontSize(19);
    ASSERT_GT(pixels(480) + 40, window.screen()->availableGeometry().height());
    EXPECT_LE(window.height(), window.screen()->availableGeometry().height());
}

TEST_F(ViewWindowTest, ShowsLegibleTextsInDarkAndLightThemes) {
    for (const auto& [background, text] : {std::pair(QColor(0xEF, 0xEF, 0xEF), QColor(Qt::black)),
                                           std::pair(QColor(Qt::white), QColor(0x33, 0x33, 0x33)),
                                           std::pair(QColor(0x2D, 0x2D, 0x2D), QColor(Qt::white)),
                                           std::pair(QColor(0x1B, 0x1E, 0x20), QColor(0xFC, 0xFC, 0xFC))}) {
        QPalette palette;
        palette.setColor(QPalette::Window, background);
        palette.setColor(QPalette::WindowText, text);
        EXPECT_GE(contrast(roleColor(Color::secondary, palette), background), 4.5);
        EXPECT_GE(contrast(roleColor(Color::primary, palette), background), 4.5);
        EXPECT_GE(contrast(roleColor(Color::green, palette), background), 3);
    }
}

TEST_F(ViewWindowTest, ShowsDistinctUncheckedBoxesInDarkAndLightThemes) {
    for (const auto& [background, base, text] :
         {std::tuple(QColor(0xEF, 0xEF, 0xEF), QColor(Qt::white), QColor(Qt::black)),
          std::tuple(QColor(0x2D, 0x2D, 0x2D), QColor(0x23, 0x26, 0x29), QColor(Qt::white)),
          std::tuple(QColor(0x1B, 0x1E, 0x20), QColor(0x14, 0x16, 0x18), QColor(0xFC, 0xFC, 0xFC))}) {
        QPalette palette(background);
        palette.setColor(QPalette::Base, base);
        palette.setColor(QPalette::WindowText, text);
        window.setPalette(palette);
        show();
        window.setFocus();
        for (auto* button : window.findChildren<QAbstractButton*>()) {
            const bool isBox = qobject_cast<QCheckBox*>(button) != nullptr;
            if (button->isChecked() || (!isBox && qobject_cast<QRadioButton*>(button) == nullptr)) continue;
            const QImage seen = button->grab().toImage().copy(0, 0, 15, button->height());
            EXPECT_GE(standingOut(seen, background), isBox ? 0.1 : 0.02) << button->accessibleName().toStdString();
        }
    }
}

TEST_F(ViewWindowTest, ShowsTheHandleOfTheListInDarkAndLightThemes) {
    for (const QPalette& theme : themes()) {
        window.setPalette(theme);
        show();
        const QRgb around = theme.color(QPalette::Window).rgb();
        const QImage seen = scrollBar().grab().toImage();
        int handle = 0;
        for (int y = 0; y < seen.height() / 2; ++y) {
            const QRgb pixel = seen.pixel(seen.width() / 2, y);
            if (std::min(contrastBetween(pixel, groove(seen)), contrastBetween(pixel, around)) >= 3) ++handle;
        }
        EXPECT_GE(handle, pixels(10)) << theme.color(QPalette::Window).name().toStdString();
    }
}

TEST_F(ViewWindowTest, HighlightsTheHandleOfTheListWhileItIsDragged) {
    show();
    const auto handle = [this] {
        const QImage seen = scrollBar().grab().toImage();
        double most = 1;
        for (int y = 0; y < seen.height() / 2; ++y)
            most = std::max(most, contrastBetween(seen.pixel(seen.width() / 2, y), groove(seen)));
        return most;
    };
    const double before = handle();
    scrollBar().setSliderDown(true);
    EXPECT_GT(handle(), before);
}

TEST_F(ViewWindowTest, ShowsTheDividersInDarkAndLightThemes) {
    for (const QPalette& theme : themes()) {
        window.setPalette(theme);
        show();
        const QImage seen = window.grab().toImage();
        const QRgb background = seen.pixel(0, 0);
        int lines = 0;
        for (int y = 0; y < seen.height(); ++y) {
            int visible = 0;
            for (int x = 0; x < seen.width(); ++x)
                visible += contrastBetween(seen.pixel(x, y), background) >= 1.5 ? 1 : 0;
            if (visible >= pixels(390)) ++lines;
        }
        EXPECT_EQ(lines, 2) << theme.color(QPalette::Window).name().toStdString();
    }
}

TEST_F(ViewWindowTest, IsAWindowToScreenReaders) {
    show();
    const QAccessibleInterface* its = QAccessible::queryAccessibleInterface(&window);
    ASSERT_NE(its, nullptr);
    EXPECT_EQ(its->text(QAccessible::Name), "BLE-kovra");
    EXPECT_EQ(its->role(), QAccessible::Window);
}

}  // namespace
}  // namespace kovra
