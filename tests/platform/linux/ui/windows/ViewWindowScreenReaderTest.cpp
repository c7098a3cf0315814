// Tests of the window as screen readers see it over AT-SPI.

#include <gtest/gtest.h>

#include <QApplication>
#include <QProcess>
#include <QTest>
#include <string>
#include <variant>
#include <vector>

#include "BLE_kovra/platform/linux/ui/windows/ViewWindow.h"
#include "tests/platform/linux/ui/SampleView.h"
#include "tests/support/Environment.h"
#include "tests/support/linux/PrivateBus.h"
#include "tests/support/linux/VirtualScreen.h"

namespace kovra {
namespace {

class ViewWindowScreenReaderTest : public testing::Test {
    struct OnX : Environment {
        OnX() {
            set("QT_QPA_PLATFORM", "xcb");
            set("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1");
            unset({"AT_SPI_BUS_ADDRESS"});
        }
    };

  protected:
    ViewWindowScreenReaderTest() {
        QCoreApplication::setApplicationName("BLE-kovra");
        state.title = "BLE-kovra";
        state.styleMask = 7;
        state.contentSize = {440, 480};
    }

    void show() {
        state.content = sample::view(content);
        window.showWindow(state);
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    }
    // Runs screen_reader.py and returns its output. The window answers its requests meanwhile.
    static std::string run(const QStringList& arguments) {
        QProcess reader;
        reader.start(KOVRA_PYTHON, QStringList{"-W", "ignore", KOVRA_SCREEN_READER} + arguments);
        EXPECT_TRUE(QTest::qWaitFor([&] { return reader.state() == QProcess::NotRunning; }, 60'000));
        EXPECT_EQ(reader.exitCode(), 0) << reader.readAllStandardError().toStdString();
        return reader.readAllStandardOutput().toStdString();
    }

    const VirtualScreen screen{"640x600x24"};
    const PrivateBus bus{"DBUS_SESSION_BUS_ADDRESS"};
    const OnX onX;
    int count = 1;
    char name[5] = "test";
    char* arguments[2] = {name, nullptr};
    QApplication application{count, arguments};
    std::vector<ToResident> sent;
    ViewWindow window{[this](const ToResident& message) { sent.push_back(message); }};
    ShowWindow state;
    sample::Content content;
};

// A single test, because the toolkit connects to one accessibility bus per process.
TEST_F(ViewWindowScreenReaderTest, ReadsAndOperatesEveryControlInVisualOrder) {
    content.devices = {{"a", "Mouse", true, true}, {"b", "Rat", false, true}};
    show();
    content.devices = {{"c", "Cat & <b>dog</b>"}, {"b", "Rat", false, true}, {"a", "Mouse"}};
    content.isMuted = true;
    content.texts.status = "Trackpad muted";
    show();
    EXPECT_EQ(run({"read"}), R"(application 'BLE-kovra' showing
  frame 'BLE-kovra' showing
    label 'BLE-kovra — trackpad control' showing
    check box 'Mute trackpad' checked focusable focused showing
    panel 'Mode:' showing
      label 'Mode:' showing
      radio button 'Always' focusable showing
      radio button 'When the selected mouse is connected' checked focusable showing
    label 'Choose a mouse' showing
    label ')" + content.texts.hint +
                                 R"(' showing
    filler '' showing
      filler '' showing
        filler '' showing
          check box 'Cat & <b>dog</b>' focusable showing
          check box 'Rat, disconnected' checked focusable showing
          check box 'Mouse' focusable showing
    label 'Trackpad muted' showing
    label 'Developed by: Tamsin Orlek ·' showing
    link 'support@example.org' focusable showing
)");

    run({"do", "Toggle", "check box", "Mouse"});
    run({"do", "Toggle", "radio button", "Always"});
    run({"do", "Press", "link", "support@example.org"});
    std::erase_if(sent, [](const ToResident& each) { return std::holds_alternative<WindowPlaced>(each); });
    ASSERT_EQ(sent.size(), 3U);
    EXPECT_EQ(std::get<ControlChanged>(sent[0]), (ControlChanged{1, {"6", "0", "a"}, true}));
    EXPECT_EQ(std::get<ControlChanged>(sent[1]), (ControlChanged{2, {"2"}, std::string("always")}));
    EXPECT_EQ(std::get<LinkFollowed>(sent[2]), (LinkFollowed{{"9", "1"}}));
}

}  // namespace
}  // namespace kovra
