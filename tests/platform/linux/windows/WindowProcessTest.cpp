#include "BLE_kovra/platform/linux/windows/WindowProcess.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <ios>
#include <sstream>

#include "tests/platform/linux/windows/WindowProcessRig.h"
#include "tests/support/Environment.h"
#include "tests/support/posix/OwnProcess.h"

namespace kovra {
namespace {

class WindowProcessTest : public WindowProcessRig {};

TEST_F(WindowProcessTest, StartsOnceThereIsSomethingToShow) {
    use("exec cat <&3 >$here/shown");
    let(30ms);
    EXPECT_FALSE(hasChildren());
    show("first");
    waitFor([&] { return read("shown").find("first") != std::string::npos; });
    show("second");
    waitFor([&] { return read("shown").find("second") != std::string::npos; });
}

TEST_F(WindowProcessTest, EndsWhenThereIsNothingToShowAndLeavesNothingBehind) {
    use("echo $$ >$here/pid; exec cat <&3 >/dev/null");
    const std::size_t before = openDescriptors();
    show("tip");
    waitFor([&] { return pid() > 0; });
    EXPECT_TRUE(hasChildren());
    window->hideTray();
    waitFor([&] { return !hasChildren(); });
    let(10ms);
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_EQ(ends, 0);
}

TEST_F(WindowProcessTest, EndsEvenIfItIgnoresItsSocket) {
    use("echo $$ >$here/pid; exec sleep 1000");
    show("tip");
    waitFor([&] { return pid() > 0; });
    window->hideTray();
    waitFor([&] { return !hasChildren(); });
}

TEST_F(WindowProcessTest, EndsEvenIfItIgnoresTheSignal) {
    use("trap '' TERM; echo $$ >$here/pid; exec cat <&3 >/dev/null");
    show("tip");
    waitFor([&] { return pid() > 0; });
    window->hideTray();
    waitFor([&] { return !hasChildren(); });
}

TEST_F(WindowProcessTest, StartsAgainAfterItEnded) {
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
    // Uses shell builtins, because a shell that starts a program blocks signals and moves descriptors.
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
    // The C library reserves the signals 32 and 33 for itself; some versions leave them ignored. Descriptor 10 is the
    // script that the shell runs.
    std::istringstream report(read("report"));
    std::uint64_t blockedSignals = 0, ignoredSignals = 0;
    report >> std::hex >> blockedSignals >> ignoredSignals;
    EXPECT_EQ(blockedSignals, 0U);
    EXPECT_EQ(ignoredSignals & ~0x1'8000'0000U, 0U);
    EXPECT_EQ(read("report").substr(2 * 17), " 0 1 10 2 3\n");
    EXPECT_EQ(read("places").substr(0, 27), "/dev/null\n/dev/null\nsocket:") << read("places");
}

TEST_F(WindowProcessTest, StartsAgainWhenItIsKilledAndShowsTheNewestState) {
    use("echo >>$here/starts; echo $$ >$here/pid; exec cat <&3 >$here/shown");
    show("first");
    waitFor([&] { return read("shown").find("first") != std::string::npos; });
    ::kill(pid(), SIGKILL);
    waitFor([&] { return ends == 1; });
    show("second");
    waitFor([&] { return starts() == 2 && read("shown").find("second") != std::string::npos; });
    EXPECT_EQ(read("shown").find("first"), std::string::npos);
}

TEST_F(WindowProcessTest, IsGivenUpAfterAFewTriesUntilThereIsSomethingNewToShow) {
    use("echo >>$here/starts");
    show("tip");
    waitFor([&] { return ends == 4; });
    show("another tip");
    let(100ms);
    EXPECT_EQ(ends, 4);
    EXPECT_EQ(starts(), 4U);
    EXPECT_FALSE(hasChildren());
    window->hideTray();
    show("tip");
    waitFor([&] { return ends == 8; });
}

TEST_F(WindowProcessTest, HasAllItsTriesAgainAfterItRanForAWhile) {
    const std::string path = script("sleep 0.05; echo >>$here/starts");
    WindowProcess settling(loop, [&] { return path; }, WindowProcess::Timing{{1ms}, 40ms, linger});
    settling.show(ShowTray());
    waitFor([&] { return starts() > 5; });
}

TEST_F(WindowProcessTest, WaitsLongerBeforeEachTry) {
    use("");
    std::vector<std::chrono::steady_clock::time_point> died;
    const auto noting = window->listenForEnd([&] { died.push_back(std::chrono::steady_clock::now()); });
    show("tip");
    waitFor([&] { return died.size() == 4; });
    EXPECT_GE(died[1] - died[0], 10ms);
    EXPECT_GE(died[2] - died[1], 20ms);
    EXPECT_GE(died[3] - died[2], 30ms);
}

TEST_F(WindowProcessTest, HasTheseTimesByDefault) {
    const WindowProcess::Timing timing;
    EXPECT_EQ(timing.delays, (std::vector<std::chrono::nanoseconds>{1s, 5s, 25s}));
    EXPECT_EQ(timing.settled, 1min);
    EXPECT_EQ(timing.linger, 30s);
    EXPECT_EQ(timing.firstSign, 2min);
    EXPECT_EQ(timing.sign, 5s);
}

TEST_F(WindowProcessTest, IsNotStartedAgainWhenThereIsNothingToShowAnyMore) {
    use("echo >>$here/starts");
    const auto hiding = window->listenForEnd([&] { window->hideTray(); });
    show("tip");
    waitFor([&] { return starts() == 1 && !hasChildren(); });
    let(50ms);
    EXPECT_EQ(starts(), 1U);
}

TEST_F(WindowProcessTest, ShowsNothingIfTheProgramIsMissing) {
    int calls = 0;
    WindowProcess missing(
        loop,
        [&] {
            ++calls;
            return folder / "missing";
        },
        WindowProcess::Timing{{1ms, 1ms}, 1h, linger});
    const std::size_t before = openDescriptors();
    missing.show(ShowTray());
    waitFor([&] { return calls == 3; });
    let(20ms);
    missing.show(ShowTray());
    EXPECT_EQ(calls, 3);
    EXPECT_FALSE(hasChildren());
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(WindowProcessTest, IsNotStartedWithoutADisplay) {
    Environment environment;
    environment.unset({"WAYLAND_DISPLAY", "DISPLAY"});
    EXPECT_EQ(windowProgram(), "");
    window = std::make_unique<WindowProcess>(loop, windowProgram);
    endListener = window->listenForEnd([this] {
        ++ends;
        window->hideWindow();
    });
    showWindow();
    EXPECT_FALSE(window->isRunning());
    EXPECT_FALSE(hasChildren());
    waitFor([&] { return ends == 1; });

    environment.set("DISPLAY", ":7");
    EXPECT_NE(windowProgram(), "");
    environment.set("DISPLAY", "");
    environment.set("WAYLAND_DISPLAY", "wayland-7");
    EXPECT_NE(windowProgram(), "");
}

TEST_F(WindowProcessTest, IsKeptForAWhileAfterItsLastWindowOrAlert) {
    for (const bool isAlert : {false, true}) {
        std::filesystem::remove(folder.path() / "pid");
        use("echo $$ >$here/pid; exec cat <&3 >/dev/null");
        isAlert ? showAlert() : showWindow();
        waitFor([&] { return pid() > 0; });
        const auto closed = std::chrono::steady_clock::now();
        isAlert ? window->closeAlerts() : window->hideWindow();
        waitFor([&] { return !hasChildren(); });
        EXPECT_GE(std::chrono::steady_clock::now() - closed, linger);
        EXPECT_FALSE(window->isRunning());
        EXPECT_EQ(ends, 0);
    }
}

TEST_F(WindowProcessTest, IsKeptForTheWholeWhileAfterTheLastWindow) {
    use("echo $$ >>$here/starts; exec cat <&3 >/dev/null");
    for (int i = 0; i < 4; ++i) {
        showWindow();
        waitFor([&] { return starts() == 1; });
        let(linger + 50ms);  // longer than the linger time, while the window is shown
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
    EXPECT_TRUE(window->isRunning()) << "a window was open a moment ago";
    waitFor([&] { return !hasChildren(); });
    show("tip");
    window->hideTray();
    EXPECT_FALSE(window->isRunning());
}

TEST_F(WindowProcessTest, StartsImmediatelyForAWindowEvenAfterTheIconWasGivenUp) {
    use("echo >>$here/starts");
    const auto closing = window->listenForEnd([&] { window->hideWindow(); });
    show("tip");
    waitFor([&] { return ends == 4; });
    showWindow();
    EXPECT_TRUE(window->isRunning());
    waitFor([&] { return ends == 8; });
}

TEST_F(WindowProcessTest, ReportsItsEndLaterIfTheProgramIsMissing) {
    WindowProcess missing(loop, [&] { return folder / "missing"; }, WindowProcess::Timing{{1h}, 1h, linger});
    int reportedEnds = 0;
    const auto closing = missing.listenForEnd([&] {
        ++reportedEnds;
        missing.hideWindow();
    });
    missing.show(ShowWindow());
    EXPECT_EQ(reportedEnds, 0);
    waitFor([&] { return reportedEnds == 1; });
    missing.show(ShowWindow());
    waitFor([&] { return reportedEnds == 2; });
    let(20ms);
    EXPECT_EQ(reportedEnds, 2);
}

TEST_F(WindowProcessTest, TerminatesTheProcessInItsDestructor) {
    use("echo $$ >$here/pid; exec sleep 1000");
    show("tip");
    waitFor([&] { return pid() > 0; });
    const pid_t child = pid();
    window.reset();
    int status = 0;
    const pid_t reaped = ::waitpid(child, &status, 0);
    // If the child exited immediately, the destructor has reaped it.
    EXPECT_TRUE(reaped == child ? WIFSIGNALED(status) : errno == ECHILD);
}

}  // namespace
}  // namespace kovra
