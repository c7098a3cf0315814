// Tests of alerts among windows of other programs, with a window manager and without one.

#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "BLE_kovra/platform/Window.h"
#include "BLE_kovra/platform/linux/windows/WindowProcess.h"
#include "tests/platform/linux/loop/Turns.h"
#include "tests/support/Environment.h"
#include "tests/support/linux/Neighbour.h"
#include "tests/support/linux/Onlooker.h"
#include "tests/support/linux/VirtualScreen.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;

// A program that runs until the end of the test.
class Program {
  public:
    explicit Program(std::vector<std::string> words) {
        std::vector<char*> arguments;
        for (std::string& each : words) arguments.push_back(each.data());
        arguments.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        ::posix_spawn_file_actions_init(&actions);
        for (const int stream : {STDOUT_FILENO, STDERR_FILENO})
            ::posix_spawn_file_actions_addopen(&actions, stream, "/dev/null", O_WRONLY, 0);
        EXPECT_EQ(::posix_spawnp(&pid_, arguments[0], &actions, nullptr, arguments.data(), environ), 0);
        ::posix_spawn_file_actions_destroy(&actions);
    }
    ~Program() {
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

  private:
    pid_t pid_ = 0;
};

using Command = std::vector<std::string>;
struct Manager {
    std::string name;
    Command command;
};
void PrintTo(const Manager& manager, std::ostream* out) { *out << manager.name; }

class ProcessAlertPresenterOnScreenTest : public testing::TestWithParam<Manager> {
  protected:
    static constexpr xcb_keycode_t escape = 9, enter = 36, space = 65, tab = 23, a = 38;

    ProcessAlertPresenterOnScreenTest() {
        environment.set("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
        environment.set("HOME", home.path());
        environment.set("XDG_CONFIG_HOME", home.path());
        environment.set("GSETTINGS_BACKEND", "memory");
        environment.unset({"WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "QT_SCALE_FACTOR"});
        if (!GetParam().command.empty()) manager.emplace(GetParam().command);
        neighbour.emplace();
        const bool isManaged = lookUntil(
            loop, [&] { return GetParam().command.empty() || neighbour->rootHas("_NET_SUPPORTING_WM_CHECK"); });
        EXPECT_TRUE(isManaged) << "no window manager started";
        // A window manager announces itself shortly before it manages windows. A window that appears in between never
        // gets the focus. The test therefore waits until the window manager manages a first window.
        if (manager) Neighbour().show("First");
        process.emplace(loop, windowProgram);
        listening = process->listen([this](const ToResident& message) { messages.push_back(message); });
    }

    // The user has requested these alerts. Others ignore keys for a moment.
    void showAlerts(const std::vector<std::uint64_t>& numbers, std::optional<std::uint64_t> requested = {}) {
        ShowAlerts shown{.alerts = {}, .front = requested};
        for (const std::uint64_t number : numbers) {
            shown.alerts.push_back(
                {number, "of the click", {"Question " + std::to_string(number), "Below it", {"First", "Second"}}});
        }
        process->show(shown);
    }
    // Shows a window like that of the settings, with one switch that fills it.
    void showWindow(bool isOn) {
        ShowWindow shown;
        shown.title = "Settings";
        shown.styleMask = WindowStyle::titled | WindowStyle::closable;
        shown.contentSize = {300, 200};
        shown.front = ++front;
        std::vector<View> label{{Text{"Switch"}, {}, {}, {}}};
        shown.content = {Toggle{isOn, {}}, std::move(label), {}, {}};
        process->show(shown);
    }
    bool eventually(const std::function<bool()>& condition) { return lookUntil(loop, condition); }
    template <typename Message>
    std::vector<Message> received() const {
        std::vector<Message> found;
        for (const ToResident& each : messages) {
            if (const auto* message = std::get_if<Message>(&each)) found.push_back(*message);
        }
        return found;
    }
    bool hasKeyboard(const std::string& title) { return neighbour->titleWithTheKeyboard() == title; }
    // Waits long enough for an unwanted effect to become visible.
    void settle() { turnsWithin(loop, 300ms); }

    Environment environment;
    TempFolder home;
    VirtualScreen screen{"1024x768x24"};
    SdEventLoop loop;
    std::optional<Program> manager;
    std::optional<Neighbour> neighbour;
    Onlooker onlooker;
    std::optional<WindowProcess> process;
    std::vector<ToResident> messages;
    WindowProcess::Messages::Token listening;
    std::uint64_t front = 0;
};
using Answers = std::vector<AlertAnswered>;

TEST_P(ProcessAlertPresenterOnScreenTest, TakeTheKeyboardFromAnotherProgramAndReturnIt) {
    neighbour->show("Letter");
    ASSERT_TRUE(eventually([&] { return hasKeyboard("Letter"); }));
    onlooker.tap(a);
    ASSERT_TRUE(eventually([&] { return neighbour->keysPressed() == 1; }));
    showAlerts({1});
    ASSERT_TRUE(eventually([&] { return hasKeyboard("BLE-kovra"); }));
    onlooker.tap(enter);
    ASSERT_TRUE(eventually([&] { return received<AlertAnswered>() == Answers{{1, 0}}; }));
    EXPECT_EQ(neighbour->keysPressed(), 1);
    showAlerts({});
    if (!GetParam().command.empty()) {
        EXPECT_TRUE(eventually([&] { return hasKeyboard("Letter"); }));
    }
}

TEST_P(ProcessAlertPresenterOnScreenTest, ComeToTheFrontAgainAndAgainWhileTheUserTypes) {
    neighbour->show("Letter");
    for (std::uint64_t number = 1; number <= 3; ++number) {
        neighbour->takeKeyboard();
        ASSERT_TRUE(eventually([&] { return hasKeyboard("Letter"); }));
        onlooker.tap(a);
        ASSERT_TRUE(eventually([&] { return neighbour->keysPressed() == int(number); }));
        showAlerts({number});
        ASSERT_TRUE(eventually([&] { return hasKeyboard("BLE-kovra"); })) << number;
        onlooker.tap(escape);
        ASSERT_TRUE(eventually([&] { return received<AlertAnswered>().size() == number; }));
        showAlerts({});
    }
}

TEST_P(ProcessAlertPresenterOnScreenTest, OpenInFrontAndReturnThereOnRequestButDoNotStayAboveOtherPrograms) {
    const auto isInFront = [&](const std::string& title) { return neighbour->topmostTitle() == title; };
    neighbour->show("Letter");
    ASSERT_TRUE(eventually([&] { return hasKeyboard("Letter"); }));
    for (const std::uint64_t request : {0U, 1U, 2U}) {
        showAlerts({1}, request == 0 ? std::nullopt : std::optional<std::uint64_t>(request));
        // Without a window manager, the server may refuse the keyboard to a request with an earlier time.
        const auto isThere = [&] { return isInFront("BLE-kovra") && (!manager || hasKeyboard("BLE-kovra")); };
        ASSERT_TRUE(eventually(isThere)) << request << ": " << neighbour->topmostTitle() << " is in front, "
                                         << neighbour->titleWithTheKeyboard() << " has the keyboard";
        // The alert requests the front once more when it is first painted.
        ASSERT_TRUE(eventually([&] { return onlooker.colors(*onlooker.window("BLE-kovra")).size() > 10; }));
        settle();
        neighbour->takeKeyboard();
        ASSERT_TRUE(eventually([&] { return isInFront("Letter") && hasKeyboard("Letter"); })) << request;
        settle();
        EXPECT_TRUE(isInFront("Letter")) << request;
    }
}

TEST_P(ProcessAlertPresenterOnScreenTest, ComeAboveEachOtherOnRequest) {
    showAlerts({1});
    ASSERT_TRUE(eventually([&] { return hasKeyboard("BLE-kovra"); }));
    showAlerts({1, 2});
    settle();
    showAlerts({2, 1}, 1);
    settle();
    ASSERT_TRUE(eventually([&] { return hasKeyboard("BLE-kovra"); }));
    onlooker.tap(enter);
    ASSERT_TRUE(eventually([&] { return received<AlertAnswered>() == Answers{{1, 0}}; }));
    showAlerts({2}, 1);
    settle();
    ASSERT_TRUE(eventually([&] { return hasKeyboard("BLE-kovra"); }));
    onlooker.tap(enter);
    EXPECT_TRUE(eventually([&] { return received<AlertAnswered>() == Answers{{1, 0}, {2, 0}}; }));
}

TEST_P(ProcessAlertPresenterOnScreenTest, AreAnsweredByTabAndSpace) {
    showAlerts({1});
    ASSERT_TRUE(eventually([&] { return hasKeyboard("BLE-kovra"); }));
    onlooker.tap(tab);
    onlooker.tap(space);
    ASSERT_TRUE(eventually([&] { return received<AlertAnswered>() == Answers{{1, 1}}; }));
}

TEST_P(ProcessAlertPresenterOnScreenTest, AreStackedAndTheOneBelowReturns) {
    showAlerts({1});
    ASSERT_TRUE(eventually([&] { return hasKeyboard("BLE-kovra"); }));
    showAlerts({1, 2});
    showAlerts({1, 2, 3});
    settle();
    for (std::uint64_t number = 3; number >= 1; --number) {
        ASSERT_TRUE(eventually([&] { return hasKeyboard("BLE-kovra"); }));
        onlooker.tap(number == 2 ? escape : enter);
        ASSERT_TRUE(eventually([&] { return received<AlertAnswered>().size() == 4 - number; }));
        showAlerts(number == 3   ? std::vector<std::uint64_t>{1, 2}
                   : number == 2 ? std::vector<std::uint64_t>{1}
                                 : std::vector<std::uint64_t>{});
        settle();
    }
    EXPECT_EQ(received<AlertAnswered>(), (Answers{{3, 0}, {2, std::nullopt}, {1, 0}}));
}

TEST_P(ProcessAlertPresenterOnScreenTest, StayInFrontOfTheSettingsWindow) {
    showWindow(false);
    ASSERT_TRUE(eventually([&] { return hasKeyboard("Settings"); }));
    showAlerts({1});
    ASSERT_TRUE(eventually([&] { return hasKeyboard("BLE-kovra"); }));
    const auto settings = onlooker.window("Settings");
    ASSERT_TRUE(settings);
    // Clicks the visible part of the window.
    onlooker.click(XCB_BUTTON_INDEX_1, settings->x + 5, settings->y + settings->height - 5);
    settle();
    // Requests the focus for the window.
    showWindow(false);
    settle();
    ASSERT_TRUE(eventually([&] { return hasKeyboard("BLE-kovra"); }));
    onlooker.tap(space);
    ASSERT_TRUE(eventually([&] { return received<AlertAnswered>() == Answers{{1, 0}}; }));
    EXPECT_TRUE(received<ControlChanged>().empty());
    showAlerts({});
    showWindow(false);
    ASSERT_TRUE(eventually([&] { return hasKeyboard("Settings"); }));
    onlooker.tap(space);
    EXPECT_TRUE(eventually([&] { return received<ControlChanged>().size() == 1; }));
}

TEST_P(ProcessAlertPresenterOnScreenTest, LeaveTheMenuItsInput) {
    showAlerts({1});
    ASSERT_TRUE(eventually([&] { return hasKeyboard("BLE-kovra"); }));
    PopUpMenu request{.x = 20, .y = 700, .menu = {}};
    request.asked =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now().time_since_epoch());
    MenuItem& item = request.menu.items.emplace_back();
    item.title = "Choose me";
    item.action = MenuAction{"choose", {}};
    process->send(request);
    settle();
    onlooker.tap(116);  // the Down key
    onlooker.tap(enter);
    ASSERT_TRUE(eventually([&] { return !received<MenuClosed>().empty(); }));
    EXPECT_EQ(received<MenuClosed>().front().chosen, 0U);
    EXPECT_TRUE(received<AlertAnswered>().empty());
    ASSERT_TRUE(eventually([&] { return hasKeyboard("BLE-kovra"); }));
    onlooker.tap(enter);
    EXPECT_TRUE(eventually([&] { return received<AlertAnswered>() == Answers{{1, 0}}; }));
}

TEST_P(ProcessAlertPresenterOnScreenTest, LeaveTheIconInTheTrayItsInput) {
    const Program tray({"trayer", "--edge", "top", "--align", "left", "--widthtype", "request", "--height", "24"});
    ShowTray shown;
    shown.image = Drawing{.name = "pad", .size = {18, 18}, .strokes = {}};
    shown.image->strokes.push_back(
        {RoundedRectangle{.origin = {2.5, 4}, .size = {13, 10}, .cornerRadii = {2, 2}}, 1.2});
    shown.toolTip = "The icon";
    shown.menu.items.emplace_back().title = "Choose me";
    shown.menu.items.back().action = MenuAction{"choose", {}};
    process->show(shown);
    showAlerts({1});
    ASSERT_TRUE(eventually([&] { return hasKeyboard("BLE-kovra"); }));
    ASSERT_TRUE(eventually([&] {
        const auto icon = onlooker.window("The icon");
        return icon && icon->width > 10 && onlooker.colors(*icon).size() > 2;
    }));
    onlooker.click(XCB_BUTTON_INDEX_1, *onlooker.window("The icon"));
    settle();
    onlooker.tap(116);  // the Down key
    onlooker.tap(enter);
    EXPECT_TRUE(eventually([&] { return received<ItemChosen>() == std::vector<ItemChosen>{{0}}; }));
    EXPECT_TRUE(received<AlertAnswered>().empty());
}

INSTANTIATE_TEST_SUITE_P(WindowManagers, ProcessAlertPresenterOnScreenTest,
                         testing::Values(Manager{"none", {}}, Manager{"openbox", {"openbox"}}),
                         [](const auto& manager) { return manager.param.name; });

}  // namespace
}  // namespace kovra
