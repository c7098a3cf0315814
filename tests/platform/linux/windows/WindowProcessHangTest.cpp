#include <algorithm>
#include <csignal>
#include <thread>

#include "tests/platform/linux/loop/Turns.h"
#include "tests/platform/linux/windows/WindowProcessRig.h"
#include "tests/support/posix/OwnProcess.h"

namespace kovra {
namespace {

class WindowProcessHangTest : public WindowProcessRig {
  protected:
    static constexpr auto sign = 150ms;

    WindowProcessHangTest() { times.sign = sign; }

    // A process that gives a sign of life whenever it is asked. It reads by itself: a stopped child of the script would
    // outlive the test.
    void useOneThatAnswers(const std::string& atItsStart = "") {
        use(atItsStart + R"(
echo $$ >$here/pid
echo >>$here/starts
: >$here/shown
while read -r line <&3; do case $line in
    *ping*) echo "$line" | sed s/ping/pong/ >&3; echo "$line" >>$here/asked ;;
    *) echo "$line" >>$here/shown ;;
esac; done)");
    }
    bool isShown(const std::string& text) const { return read("shown").find(text) != std::string::npos; }
    std::size_t answers() const {
        const std::string text = read("asked");
        return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
    }
    void stop() const {
        ASSERT_NE(pid(), 0);
        ::kill(pid(), SIGSTOP);
    }
};

TEST_F(WindowProcessHangTest, ReplacesAProcessThatHangsAndShowsTheNewestStateInTheNextOne) {
    useOneThatAnswers();
    show("first");
    waitFor([&] { return answers() > 0; });
    let(20ms);
    stop();
    show("second");
    waitFor([&] { return starts() == 2 && isShown("second"); });
    EXPECT_EQ(ends, 0) << "what is open stays open";
}

TEST_F(WindowProcessHangTest, KeepsAProcessThatAnswers) {
    times.sign = 2s;
    useOneThatAnswers();
    for (std::size_t i = 1; i <= 10; ++i) {
        show("tip " + std::to_string(i));
        waitFor([&] { return answers() >= i; });
    }
    let(100ms);
    EXPECT_EQ(starts(), 1U);
}

TEST_F(WindowProcessHangTest, WaitsLongerForTheFirstSignOfLife) {
    useOneThatAnswers("sleep 0.5");
    show("tip");
    waitFor([&] { return answers() == 1; });
    let(2 * sign);
    EXPECT_EQ(starts(), 1U);
}

TEST_F(WindowProcessHangTest, KeepsAProcessThatAnsweredWhileThisOneWasStopped) {
    useOneThatAnswers();
    show("first");
    waitFor([&] { return answers() == 1; });
    let(20ms);
    show("second");
    std::this_thread::sleep_for(3 * sign);
    let(50ms);
    EXPECT_EQ(starts(), 1U);
}

TEST_F(WindowProcessHangTest, SleepsWhileNothingIsPending) {
    useOneThatAnswers();
    show("tip");
    waitFor([&] { return answers() == 1; });
    let(20ms);
    stop();
    EXPECT_LE(turnsWithin(loop, 3 * sign), 2);
    EXPECT_EQ(starts(), 1U);
}

TEST_F(WindowProcessHangTest, GivesUpAfterAFewProcessesThatHang) {
    times.firstSign = 20ms;
    use("echo >>$here/starts; exec sleep 1000");
    showWindow();
    waitFor([&] { return ends == 1; });
    EXPECT_LE(starts(), 4U);  // a process may be killed before it writes
    EXPECT_FALSE(window->isRunning());
    waitFor([&] { return !hasChildren(); });
}

TEST_F(WindowProcessHangTest, GivesUpAfterAFewProcessesThatHangFromTheirStartHoweverLongItWaitsForEach) {
    times.firstSign = 20ms;
    times.settled = 10ms;
    use("echo >>$here/starts; exec sleep 1000");
    showWindow();
    waitFor([&] { return ends == 1; });
    EXPECT_FALSE(window->isRunning());
}

TEST_F(WindowProcessHangTest, KeepsAProcessThatNeverAnswersAfterAnUpgrade) {
    isReplaced = true;
    times.firstSign = 20ms;
    use("echo >>$here/starts; exec sleep 1000");
    showWindow();
    waitFor([&] { return starts() == 1; });
    let(200ms);
    EXPECT_EQ(starts(), 1U);
    EXPECT_EQ(ends, 0);
    EXPECT_TRUE(window->isRunning());
}

TEST_F(WindowProcessHangTest, ReplacesAProcessThatHasAnsweredBeforeEvenAfterAnUpgrade) {
    useOneThatAnswers();
    show("first");
    waitFor([&] { return answers() > 0; });
    let(20ms);
    isReplaced = true;
    stop();
    show("second");
    waitFor([&] { return starts() == 2 && isShown("second"); });
    EXPECT_EQ(ends, 0);
}

TEST_F(WindowProcessHangTest, StartsNoOtherProcessIfThereIsNothingToShowAnyMore) {
    times.firstSign = 50ms;
    use("echo >>$here/starts; exec sleep 1000");
    showWindow();
    window->hideWindow();
    waitFor([&] { return !hasChildren(); });
    EXPECT_LE(starts(), 1U);
    EXPECT_EQ(ends, 0);
}

}  // namespace
}  // namespace kovra
