// Tests of the window on an X server (Xvfb). The server sends mouse and keyboard events while the window's content
// changes.

#include <gtest/gtest.h>

#include <QAbstractEventDispatcher>
#include <QCheckBox>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyle>
#include <QStyleOptionSlider>
#include <QTest>
#include <algorithm>
#include <ctime>
#include <random>
#include <variant>

#include "BLE_kovra/platform/linux/ui/windows/ViewWindow.h"
#include "tests/platform/linux/ui/RealInput.h"
#include "tests/platform/linux/ui/SampleView.h"
#include "tests/support/Environment.h"
#include "tests/support/linux/VirtualScreen.h"

namespace kovra {
namespace {

// Key codes of the X server, which identify positions on the keyboard.
constexpr xcb_keycode_t tab = 23;
constexpr xcb_keycode_t space = 65;
constexpr xcb_keycode_t escape = 9;
constexpr xcb_keycode_t letterW = 25;
constexpr xcb_keycode_t letterQ = 24;
constexpr xcb_keycode_t comma = 59;
constexpr xcb_keycode_t control = 37;

class ViewWindowLiveTest : public testing::Test {
    struct OnX : Environment {
        OnX() {
            set("QT_QPA_PLATFORM", "xcb");
            // Keeps the toolkit from using the user's bus and from starting one.
            set("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
            set("QT_NO_XDG_DESKTOP_PORTAL", "1");  // Qt 6.8 leaks a call of the portal that has failed
        }
    };

  protected:
    ViewWindowLiveTest() {
        state.title = "BLE-kovra";
        state.styleMask = 7;
        state.contentSize = {440, 480};
        state.front = 1;
    }
    void SetUp() override {
        content.devices = sample::mice(200);
        rebuild();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    }

    void rebuild() {
        state.content = sample::view(content);
        state.acknowledged = changes.size();
        window.showWindow(state);
    }
    // Answers like the resident program: the ticked device becomes chosen.
    void answer() {
        const ControlChanged& change = changes.back();
        for (sample::Device& device : content.devices) {
            if (device.id == change.path.back()) device.isChosen = std::get<bool>(change.value);
        }
        rebuild();
    }

    QScrollArea& list() const { return *window.findChild<QScrollArea*>(); }
    // Returns the row of a device, whose name is "Mouse " followed by its id.
    QCheckBox* row(const std::string& id) const {
        for (auto* each : window.findChildren<QCheckBox*>()) {
            if (each->accessibleName().toStdString() == "Mouse " + id) return each;
        }
        return nullptr;
    }
    bool isUnderPointer(const QWidget& widget, const QPoint& pointer) const {
        const QRect seen = widget.visibleRegion().boundingRect();
        return seen.contains(widget.mapFromGlobal(pointer));
    }
    // Returns a random row that is completely visible.
    QCheckBox& anyRowInSight() {
        std::vector<QCheckBox*> rows;
        for (auto* each : list().findChildren<QCheckBox*>()) {
            if (each->visibleRegion().boundingRect().height() == each->height()) rows.push_back(each);
        }
        return *rows[random() % rows.size()];
    }
    void changeTheListSomehow() {
        switch (random() % 4) {
            case 0:
                std::shuffle(content.devices.begin(), content.devices.end(), random);
                break;
            case 1:
                content.devices.erase(content.devices.begin() + static_cast<long>(random() % content.devices.size()));
                break;
            case 2: {
                const std::string id = std::to_string(++nextId);
                const auto place = content.devices.begin() + static_cast<long>(random() % content.devices.size());
                content.devices.insert(place, {id, "Mouse " + id});
                break;
            }
            default:
                content.isMuted = !content.isMuted;
        }
        rebuild();
    }

    const VirtualScreen screen{"800x700x24"};
    const OnX onX;
    int count = 1;
    char name[5] = "test";
    char* arguments[2] = {name, nullptr};
    QApplication application{count, arguments};
    RealInput user;
    std::vector<ControlChanged> changes;
    int closings = 0;
    int quits = 0;
    int settings = 0;  // how many times the settings were requested
    ViewWindow window{[this](const ToResident& message) {
        if (const auto* change = std::get_if<ControlChanged>(&message)) changes.push_back(*change);
        if (std::holds_alternative<WindowClosed>(message)) ++closings;
        if (std::holds_alternative<QuitWanted>(message)) ++quits;
        if (std::holds_alternative<SettingsWanted>(message)) ++settings;
    }};
    ShowWindow state;
    sample::Content content;
    std::mt19937 random{20261121};
    int nextId = 1000;
};

TEST_F(ViewWindowLiveTest, TicksTheClickedDeviceWhileRowsMove) {
    int ticks = 0;
    for (int round = 0; round < 30; ++round) {
        QCheckBox& pressed = anyRowInSight();
        const std::string id = pressed.accessibleName().mid(6).toStdString();
        const QPoint pointer = pressed.mapToGlobal(QPoint(60, pressed.height() / 2));
        user.moveTo(pointer);
        user.press();
        user.settle();
        ASSERT_TRUE(pressed.isDown());
        for (unsigned i = random() % 4; i > 0; --i) changeTheListSomehow();
        QCoreApplication::processEvents();
        const QCheckBox* const now = row(id);
        const bool isToTick = now != nullptr && isUnderPointer(*now, pointer);
        const auto before = changes.size();
        user.release();
        user.settle();
        ASSERT_EQ(changes.size(), before + (isToTick ? 1 : 0)) << "in round " << round;
        if (!isToTick) continue;
        ++ticks;
        ASSERT_EQ(changes.back().path, (std::vector<std::string>{"6", "0", id}));
        answer();
        ASSERT_EQ(row(id)->isChecked(), std::get<bool>(changes.back().value));
    }
    EXPECT_GT(ticks, 5);
    EXPECT_LT(ticks, 25);
}

TEST_F(ViewWindowLiveTest, KeepsASwitchPressedWhileTheListGrows) {
    content.devices.clear();
    rebuild();
    QCoreApplication::processEvents();
    QCheckBox& block = *window.findChildren<QCheckBox*>().front();
    block.setFocus();
    user.moveTo(block.mapToGlobal(QPoint(5, block.height() / 2)));
    user.press();
    user.settle();
    for (int i = 0; i < 200; ++i) {
        content.devices.push_back({std::to_string(i), "Mouse " + std::to_string(i)});
        rebuild();
        ASSERT_TRUE(block.isDown());
        ASSERT_TRUE(block.hasFocus());
    }
    content.devices.clear();
    rebuild();
    QCoreApplication::processEvents();
    user.release();
    user.settle();
    EXPECT_EQ(changes, (std::vector<ControlChanged>{{1, {"1"}, false}}));
}

TEST_F(ViewWindowLiveTest, KeepsScrollBarAndFocusThroughManyRebuildsDuringADrag) {
    row("7")->setFocus();
    QScrollBar& bar = *list().verticalScrollBar();
    QStyleOptionSlider option;
    option.initFrom(&bar);
    option.orientation = Qt::Vertical;
    option.minimum = bar.minimum();
    option.maximum = bar.maximum();
    option.pageStep = bar.pageStep();
    const QRect handle = bar.style()->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider, &bar);
    const QPoint grip = bar.mapToGlobal(handle.center());
    user.moveTo(grip);
    user.press();
    user.settle();
    ASSERT_TRUE(bar.isSliderDown());
    int farthest = 0;
    for (int i = 0; i < 100; ++i) {
        if (i % 5 == 0) {
            user.moveTo(grip + QPoint(0, 2 * i / 3));
            user.settle();
        }
        const int before = bar.value();
        std::shuffle(content.devices.begin(), content.devices.end(), random);
        content.isMuted = !content.isMuted;
        rebuild();
        ASSERT_TRUE(bar.isSliderDown());
        ASSERT_EQ(bar.value(), before);
        ASSERT_TRUE(row("7")->hasFocus());
        farthest = std::max(farthest, before);
    }
    user.release();
    user.settle();
    EXPECT_FALSE(bar.isSliderDown());
    EXPECT_GT(farthest, 500);
    EXPECT_TRUE(changes.empty());
}

TEST_F(ViewWindowLiveTest, TicksTheFocusedDeviceWithTheKeyboardWhileRowsMove) {
    QWidget* last = nullptr;
    for (int i = 0; i < 3; ++i) user.key(tab);
    ASSERT_TRUE(QTest::qWaitFor([&] { return list().isAncestorOf(QApplication::focusWidget()); }));
    for (int round = 0; round < 30; ++round) {
        QWidget* const focused = QApplication::focusWidget();
        ASSERT_NE(focused, last);
        last = focused;
        const std::string id = focused->accessibleName().mid(6).toStdString();
        std::shuffle(content.devices.begin(), content.devices.end(), random);
        rebuild();
        user.key(space);
        ASSERT_TRUE(QTest::qWaitFor([&] { return changes.size() == static_cast<std::size_t>(round) + 1; }));
        ASSERT_EQ(changes.back().path.back(), id);
        answer();
        user.key(tab);
        // After the last row, the Tab key leads to the link and the switch. The focus must return to a row.
        ASSERT_TRUE(QTest::qWaitFor([&] { return QApplication::focusWidget() != focused; }));
        if (!list().isAncestorOf(QApplication::focusWidget())) row(std::to_string(round))->setFocus();
    }
}

TEST_F(ViewWindowLiveTest, ScrollsWithTheWheelWithoutChangingAnything) {
    user.moveTo(list().mapToGlobal(QPoint(50, 50)));
    for (int i = 0; i < 5; ++i) user.turnWheel(true);
    user.settle();
    EXPECT_GT(list().verticalScrollBar()->value(), 50);
    EXPECT_TRUE(changes.empty());
}

TEST_F(ViewWindowLiveTest, AcceptsItsShortcutsInEveryKeyboardLayout) {
    for (const char* layout : {"us", "ru", "us,ru", "fr"}) {
        const std::string command = std::string("setxkbmap -layout ") + layout;
        ASSERT_EQ(std::system(command.c_str()), 0);
        const bool isFrench = std::string(layout) == "fr";  // W and Z are swapped, so are Q and A
        const int closingsBefore = closings;
        const int quitsBefore = quits;
        const int settingsBefore = settings;
        user.moveTo(window.mapToGlobal(QPoint(5, 5)));
        user.settle();
        user.key(isFrench ? xcb_keycode_t{38} : letterQ, control);
        ASSERT_TRUE(QTest::qWaitFor([&] { return quits == quitsBefore + 1; })) << layout;
        user.key(isFrench ? xcb_keycode_t{58} : comma, control);
        ASSERT_TRUE(QTest::qWaitFor([&] { return settings == settingsBefore + 1; })) << layout;
        user.key(isFrench ? xcb_keycode_t{52} : letterW, control);
        ASSERT_TRUE(QTest::qWaitFor([&] { return closings == closingsBefore + 1; })) << layout;
        ++state.front;
        rebuild();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
        user.key(escape);
        ASSERT_TRUE(QTest::qWaitFor([&] { return closings == closingsBefore + 2; })) << layout;
        ++state.front;
        rebuild();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    }
}

TEST_F(ViewWindowLiveTest, DoesNotWakeUpWhileIdle) {
    user.key(tab);
    user.moveTo(row("1")->mapToGlobal(QPoint(20, 5)));
    user.settle();
    QTest::qWait(1000);  // lets pending work end
    int wakings = 0;
    QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::awake, &window,
                     [&] { ++wakings; });
    QTimer::singleShot(2000, &application, [] { QCoreApplication::quit(); });
    const std::clock_t before = std::clock();
    QCoreApplication::exec();
    EXPECT_LE(wakings, 3);  // the start, the timer and the end
    EXPECT_LT(double(std::clock() - before) / CLOCKS_PER_SEC, 0.02);
}

}  // namespace
}  // namespace kovra
