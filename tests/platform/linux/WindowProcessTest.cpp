#include "BLE_kovra/platform/linux/WindowProcess.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/Environment.h"
#include "tests/support/posix/TempFolder.h"

// Of the address sanitizer, which takes malloc's place; null without it.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes() __attribute__((weak));  // NOLINT

namespace kovra {
namespace {

using namespace std::chrono_literals;

std::size_t bytesInUse() {
    if (__sanitizer_get_current_allocated_bytes != nullptr) return __sanitizer_get_current_allocated_bytes();
    return ::mallinfo2().uordblks;
}

// Child programs of the test's own, shell scripts that leave word in files; `$here` is the folder.
class WindowProcessTest : public testing::Test {
  protected:
    static constexpr auto limit = 20s;
    static constexpr auto linger = 200ms;

    void TearDown() override {
        window.reset();
        while (::waitpid(-1, nullptr, 0) > 0) {
        }
    }

    std::string script(const std::string& text) const {
        const std::string path = folder / "program";
        writeFile(path, "#!/bin/sh\nhere='" + folder.path().string() + "'\n" + text + "\n");
        ::chmod(path.c_str(), 0755);
        return path;
    }
    // Runs `text` as the window process, impatiently.
    void use(const std::string& text) {
        const std::string path = script(text);
        window = std::make_unique<WindowProcess>(
            loop, [path] { return path; }, WindowProcess::Patience{{10ms, 20ms, 30ms}, 1h, linger});
        mourning = window->listenForDeath([this] { ++deaths; });
        listening = window->listen(
            [this](const ToResident& message) { chosen.push_back(std::get<ItemChosen>(message).position); });
    }
    // Empty as long as it was not written.
    std::string read(const std::string& name) const {
        const auto names = folder.names();
        return names.contains(name) ? readFile(folder / name) : "";
    }
    void show(const std::string& toolTip) { window->show(ShowTray{{}, false, toolTip, {}}); }

    void showWindow() { window->show(ShowWindow()); }
    void showAlert() { window->show(ShowAlerts{{{7, "", {}}}}); }
    void popUp(int x) { window->tell(PopUpMenu{.x = x, .y = 0, .asked = {}, .menu = {}}); }

    // Looks again each few milliseconds, for what no descriptor tells of.
    void waitFor(const std::function<bool()>& condition) {
        const auto end = std::chrono::steady_clock::now() + limit;
        while (!condition() && std::chrono::steady_clock::now() < end) let(5ms);
        EXPECT_TRUE(condition());
    }
    void let(std::chrono::milliseconds duration) {
        bool done = false;
        loop.asyncAfter(duration, [&] { done = true; });
        loop.runUntil([&] { return done; });
    }
    static bool hasChildren() { return ::waitid(P_ALL, 0, nullptr, WEXITED | WNOHANG | WNOWAIT) == 0; }
    static std::size_t openDescriptors() {
        const std::filesystem::directory_iterator open("/proc/self/fd");
        return static_cast<std::size_t>(std::distance(begin(open), end(open)));
    }
    pid_t pid() const { return std::stoi("0" + read("pid")); }
    std::size_t starts() const {
        const std::string text = read("starts");
        return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
    }

    const TempFolder folder;
    SdEventLoop loop;
    std::unique_ptr<WindowProcess> window;
    WindowProcess::Messages::Token listening;
    WindowProcess::Deaths::Token mourning;
    int deaths = 0;
    std::vector<std::size_t> chosen;
};

TEST_F(WindowProcessTest, StartsOnceThereIsSomethingToShow) {
    use("exec cat <&3 >$here/shown");
    let(30ms);
    EXPECT_FALSE(hasChildren());
    show("first");
    waitFor([&] { return read("shown").find("first") != std::string::npos; });
    show("second");
    waitFor([&] { return read("shown").find("second") != std::string::npos; });
}

TEST_F(WindowProcessTest, HandsOnWhatTheUserChose) {
    use(R"(echo '{"is":"itemChosen","position":4}
no message
{"is":"itemChosen","position":0}' >&3
exec cat <&3 >/dev/null)");
    show("tip");
    waitFor([&] { return chosen.size() == 2; });
    EXPECT_EQ(chosen, (std::vector<std::size_t>{4, 0}));
}

TEST_F(WindowProcessTest, HandsOnWhatWasChosenLastBeforeItDied) {
    use(R"(echo '{"is":"itemChosen","position":7}' >&3)");
    show("tip");
    waitFor([&] { return deaths > 0; });
    EXPECT_EQ(chosen.size(), static_cast<std::size_t>(deaths));
}

TEST_F(WindowProcessTest, GoesWhenThereIsNothingToShowAndLeavesNothingBehind) {
    use("echo $$ >$here/pid; exec cat <&3 >/dev/null");
    const std::size_t before = openDescriptors();
    show("tip");
    waitFor([&] { return pid() > 0; });
    EXPECT_TRUE(hasChildren());
    window->hideTray();
    waitFor([&] { return !hasChildren(); });
    let(10ms);
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_EQ(deaths, 0);
}

TEST_F(WindowProcessTest, GoesAlsoWhenItDoesNotMindItsSocket) {
    use("echo $$ >$here/pid; exec sleep 1000");
    show("tip");
    waitFor([&] { return pid() > 0; });
    window->hideTray();
    waitFor([&] { return !hasChildren(); });
}

TEST_F(WindowProcessTest, ComesBackAfterItWent) {
    use("echo >>$here/starts; exec cat <&3 >/dev/null");
    for (std::size_t round = 1; round < 4; ++round) {
        show("tip");
        waitFor([&] { return starts() == round; });
        window->hideTray();
    }
    waitFor([&] { return !hasChildren(); });
}

TEST_F(WindowProcessTest, StartsWithDefaultHandlersAndNoDescriptorOfOurs) {
    const int open = ::open("/dev/null", O_RDONLY);  // without close-on-exec
    const auto blocked = loop.onSignal(SIGUSR1, [] {});
    const auto oldPipe = std::signal(SIGPIPE, SIG_IGN);
    // By builtins, since a shell that starts a program blocks signals and moves descriptors itself.
    use(R"(while read -r name value; do
    case $name in SigBlk:) blocked=$value ;; SigIgn:) ignored=$value ;; esac
done </proc/self/status
for each in /proc/self/fd/*; do [ -e $each ] && open="$open ${each##*/}"; done
echo "$blocked $ignored $open" >$here/report
places=$(readlink /proc/$$/fd/0 /proc/$$/fd/1 /proc/$$/fd/3)
echo "$places" >$here/places
echo >$here/done
exec cat <&3 >/dev/null)");
    show("tip");
    waitFor([&] { return !read("done").empty(); });
    std::signal(SIGPIPE, oldPipe);
    ::close(open);
    // libc keeps two signals to itself; the shell has its script open at 10.
    EXPECT_EQ(read("report"), "0000000000000000 0000000180000000  0 1 10 2 3\n");
    EXPECT_EQ(read("places").substr(0, 27), "/dev/null\n/dev/null\nsocket:") << read("places");
}

TEST_F(WindowProcessTest, StartsAgainWhenItIsKilledAndShowsTheNewest) {
    use("echo $$ >$here/pid; echo >>$here/starts; exec cat <&3 >$here/shown");
    show("first");
    waitFor([&] { return read("shown").find("first") != std::string::npos; });
    ::kill(pid(), SIGKILL);
    waitFor([&] { return deaths == 1; });
    show("second");
    waitFor([&] { return starts() == 2 && read("shown").find("second") != std::string::npos; });
    EXPECT_EQ(read("shown").find("first"), std::string::npos);
}

TEST_F(WindowProcessTest, IsGivenUpAfterAFewTriesUntilThereIsSomethingAnew) {
    use("echo >>$here/starts");
    show("tip");
    waitFor([&] { return deaths == 4; });
    show("another tip");
    let(100ms);
    EXPECT_EQ(deaths, 4);
    EXPECT_EQ(starts(), 4U);
    EXPECT_FALSE(hasChildren());
    window->hideTray();
    show("tip");
    waitFor([&] { return deaths == 8; });
}

TEST_F(WindowProcessTest, HasItsTriesBackOnceItLivedForAWhile) {
    const std::string path = script("sleep 0.05; echo >>$here/starts");
    WindowProcess settling(
        loop, [&] { return path; }, WindowProcess::Patience{{1ms}, 40ms, linger});
    settling.show(ShowTray());
    waitFor([&] { return starts() > 5; });
}

TEST_F(WindowProcessTest, TakesLongerForEachTry) {
    use("");
    std::vector<std::chrono::steady_clock::time_point> died;
    const auto noting = window->listenForDeath([&] { died.push_back(std::chrono::steady_clock::now()); });
    show("tip");
    waitFor([&] { return died.size() == 4; });
    EXPECT_GE(died[1] - died[0], 10ms);
    EXPECT_GE(died[2] - died[1], 20ms);
    EXPECT_GE(died[3] - died[2], 30ms);
}

TEST_F(WindowProcessTest, IsNotStartedAgainWhenThereIsNothingToShowAnyMore) {
    use("echo >>$here/starts");
    const auto hiding = window->listenForDeath([&] { window->hideTray(); });
    show("tip");
    waitFor([&] { return starts() == 1 && !hasChildren(); });
    let(50ms);
    EXPECT_EQ(starts(), 1U);
}

TEST_F(WindowProcessTest, ShowsNothingWhereTheProgramIsMissing) {
    int asked = 0;
    WindowProcess missing(
        loop,
        [&] {
            ++asked;
            return folder / "missing";
        },
        WindowProcess::Patience{{1ms, 1ms}, 1h, linger});
    const std::size_t before = openDescriptors();
    missing.show(ShowTray());
    waitFor([&] { return asked == 3; });
    let(20ms);
    missing.show(ShowTray());
    EXPECT_EQ(asked, 3);
    EXPECT_FALSE(hasChildren());
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(WindowProcessTest, IsNotThereWithoutADisplay) {
    Environment environment;
    environment.unset({"WAYLAND_DISPLAY", "DISPLAY"});
    EXPECT_EQ(windowProgram(), "");
    window = std::make_unique<WindowProcess>(loop, windowProgram);
    mourning = window->listenForDeath([this] {
        ++deaths;
        window->hideWindow();
    });
    showWindow();
    EXPECT_FALSE(window->isRunning());
    EXPECT_FALSE(hasChildren());
    waitFor([&] { return deaths == 1; });

    environment.set("DISPLAY", ":7");
    EXPECT_NE(windowProgram(), "");
    environment.set("DISPLAY", "");
    environment.set("WAYLAND_DISPLAY", "wayland-7");
    EXPECT_NE(windowProgram(), "");
}

TEST_F(WindowProcessTest, NeitherWaitsNorGrowsWhenItIsNotRead) {
    use("echo $$ >$here/pid; exec sleep 1000");
    show("tip");
    waitFor([&] { return pid() > 0; });
    const std::string long_(100'000, 'x');
    for (int i = 0; i < 100; ++i) show(long_);
    const std::size_t before = bytesInUse();
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < 1'000; ++i) {
        show(long_);
        if (i % 100 == 0) let(1ms);
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, limit);
    EXPECT_EQ(deaths, 0);
    EXPECT_LT(bytesInUse(), before + 200'000);  // 100 MB went by
}

TEST_F(WindowProcessTest, TakesUpWritingWhenItIsReadAgain) {
    use("echo $$ >$here/pid; while [ ! -e $here/go ]; do sleep 0.01; done; exec cat <&3 >$here/shown");
    show("tip");
    waitFor([&] { return pid() > 0; });
    for (int i = 0; i < 50; ++i) show(std::string(100'000, 'x'));
    show("the newest");
    writeFile(folder / "go", "go");
    waitFor([&] { return read("shown").find("the newest") != std::string::npos; });
    const std::string shown = read("shown");
    EXPECT_LT(std::count(shown.begin(), shown.end(), '\n'), 10);
}

TEST_F(WindowProcessTest, StartsForAnEventAndStaysUntilItIsReleased) {
    use("exec cat <&3 >$here/shown");
    popUp(71);
    popUp(72);
    waitFor([&] { return read("shown").find("\"x\":72") != std::string::npos; });
    EXPECT_NE(read("shown").find("\"x\":71"), std::string::npos);
    let(30ms);
    EXPECT_TRUE(hasChildren());
    window->release();
    waitFor([&] { return !hasChildren(); });
    EXPECT_EQ(deaths, 0);
}

TEST_F(WindowProcessTest, IsNotStartedAgainForAnEventWhenItIsKilled) {
    use("echo $$ >$here/pid; echo >>$here/starts; exec cat <&3 >/dev/null");
    popUp(71);
    waitFor([&] { return pid() > 0; });
    ::kill(pid(), SIGKILL);
    waitFor([&] { return deaths == 1 && !hasChildren(); });
    let(50ms);
    EXPECT_EQ(starts(), 1U);
    window->release();
    popUp(72);
    waitFor([&] { return starts() == 2; });
}

TEST_F(WindowProcessTest, TellsNoEventAgainToAProcessThatComesLater) {
    use("echo $$ >$here/pid; echo >>$here/starts; exec cat <&3 >$here/shown");
    show("state");
    popUp(71);
    waitFor([&] { return read("shown").find("\"x\":71") != std::string::npos; });
    ::kill(pid(), SIGKILL);
    waitFor([&] { return starts() == 2 && read("shown").find("state") != std::string::npos; });
    let(30ms);
    EXPECT_EQ(read("shown").find("\"x\":71"), std::string::npos);
}

TEST_F(WindowProcessTest, StaysWhenItIsReleasedWhileThereIsSomethingToShow) {
    use("echo $$ >$here/pid; exec cat <&3 >/dev/null");
    popUp(71);
    show("state");
    waitFor([&] { return pid() > 0; });
    window->release();
    let(50ms);
    EXPECT_TRUE(hasChildren());
    window->hideTray();
    waitFor([&] { return !hasChildren(); });
}

TEST_F(WindowProcessTest, StartsAtOnceForAnEventAlsoWhereItWasGivenUp) {
    use("echo >>$here/starts");
    show("tip");
    waitFor([&] { return deaths == 4; });
    popUp(71);
    waitFor([&] { return deaths == 5; });
    let(50ms);
    EXPECT_EQ(starts(), 5U);
}

TEST_F(WindowProcessTest, TellsTheSameStateOnce) {
    use("exec cat <&3 >$here/shown");
    const auto told = [&] {
        const std::string shown = read("shown");
        return std::count(shown.begin(), shown.end(), '\n');
    };
    int differing = 0;
    for (const char* tip : {"one", "two", "one"}) {
        ++differing;
        for (int i = 0; i < 3; ++i) {
            show(tip);
            waitFor([&] { return told() >= differing; });
        }
    }
    let(20ms);
    EXPECT_EQ(told(), 3);
}

TEST_F(WindowProcessTest, TellsOfOneStateLessWhileTheOthersStay) {
    use("exec cat <&3 >$here/shown");
    show("tip");
    showWindow();
    showAlert();
    waitFor([&] { return read("shown").find("\"number\":7") != std::string::npos; });
    window->hideTray();
    waitFor([&] { return read("shown").ends_with("{\"is\":\"hideTray\"}\n"); });
    window->closeAlerts();
    waitFor([&] { return read("shown").ends_with("{\"alerts\":[],\"is\":\"showAlerts\"}\n"); });
    let(2 * linger);
    EXPECT_TRUE(hasChildren());
    window->hideWindow();
    waitFor([&] { return read("shown").ends_with("{\"is\":\"hideWindow\"}\n"); });
}

TEST_F(WindowProcessTest, IsKeptForAWhileAfterItsLastWindowOrAlert) {
    for (const bool isAlert : {false, true}) {
        use("echo $$ >$here/pid; exec cat <&3 >/dev/null");
        isAlert ? showAlert() : showWindow();
        waitFor([&] { return pid() > 0; });
        const auto closed = std::chrono::steady_clock::now();
        isAlert ? window->closeAlerts() : window->hideWindow();
        waitFor([&] { return !hasChildren(); });
        EXPECT_GE(std::chrono::steady_clock::now() - closed, linger);
        EXPECT_FALSE(window->isRunning());
        EXPECT_EQ(deaths, 0);
    }
}

TEST_F(WindowProcessTest, IsKeptForTheWholeWhileAfterTheLastTime) {
    use("echo $$ >>$here/starts; exec cat <&3 >/dev/null");
    for (int i = 0; i < 4; ++i) {
        showWindow();
        waitFor([&] { return starts() == 1; });
        let(linger + 50ms);  // while it is shown
        window->hideWindow();
        let(linger / 2);
    }
    EXPECT_EQ(starts(), 1U);
    EXPECT_TRUE(window->isRunning());
    waitFor([&] { return !hasChildren(); });
}

TEST_F(WindowProcessTest, EndsWithItsIconUnlessItIsKeptForAnotherReason) {
    use("echo $$ >>$here/starts; exec cat <&3 >/dev/null");
    showWindow();
    show("tip");
    waitFor([&] { return starts() == 1; });
    window->hideWindow();
    window->hideTray();
    EXPECT_TRUE(window->isRunning()) << "a window was there a moment ago";
    waitFor([&] { return !hasChildren(); });
    show("tip");
    window->hideTray();
    EXPECT_FALSE(window->isRunning());
}

TEST_F(WindowProcessTest, ShowsWhatItsDeathDidNotEndAgain) {
    use("echo $$ >$here/pid; echo >>$here/starts; exec cat <&3 >$here/shown");
    const auto closing = window->listenForDeath([&] { window->hideWindow(); });
    show("tip");
    showWindow();
    waitFor([&] { return read("shown").find("showWindow") != std::string::npos; });
    ::kill(pid(), SIGKILL);
    waitFor([&] { return starts() == 2 && read("shown").find("tip") != std::string::npos; });
    let(30ms);
    EXPECT_EQ(read("shown").find("indow"), std::string::npos);
}

TEST_F(WindowProcessTest, StartsAtOnceForAWindowAlsoWhereTheIconWasGivenUp) {
    use("echo >>$here/starts");
    const auto closing = window->listenForDeath([&] { window->hideWindow(); });
    show("tip");
    waitFor([&] { return deaths == 4; });
    showWindow();
    EXPECT_TRUE(window->isRunning());
    waitFor([&] { return deaths == 8; });
}

TEST_F(WindowProcessTest, TellsOfItsDeathLaterWhereTheProgramIsMissing) {
    WindowProcess missing(
        loop, [&] { return folder / "missing"; }, WindowProcess::Patience{{1h}, 1h, linger});
    int told = 0;
    const auto closing = missing.listenForDeath([&] {
        ++told;
        missing.hideWindow();
    });
    missing.show(ShowWindow());
    EXPECT_EQ(told, 0);
    waitFor([&] { return told == 1; });
    missing.show(ShowWindow());
    waitFor([&] { return told == 2; });
    let(20ms);
    EXPECT_EQ(told, 2);
}

TEST_F(WindowProcessTest, EndsTheProcessWithItself) {
    use("echo $$ >$here/pid; exec sleep 1000");
    show("tip");
    waitFor([&] { return pid() > 0; });
    const pid_t child = pid();
    window.reset();
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status));
}

}  // namespace
}  // namespace kovra
