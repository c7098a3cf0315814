#include <sys/wait.h>

#include <csignal>
#include <filesystem>
#include <fstream>

#include "BLE_kovra/platform/macos/loop/CFDescriptorLoop.h"
#include "BLE_kovra/platform/macos/loop/DispatchMainQueue.h"
#include "BLE_kovra/platform/posix/PosixProcessRunner.h"
#include "BLE_kovra/platform/posix/ProcessEnd.h"
#include "tests/contracts/ProcessRunnerContract.h"
#include "tests/platform/macos/FrameworkRig.h"
#include "tests/platform/macos/loop/FakeEventQueue.h"
#include "tests/support/posix/ScriptedPrograms.h"
#include "tests/support/posix/Scripts.h"

namespace kovra {
namespace {

class CFDescriptorLoopDriver : public ScriptedPrograms {
  public:
    ProcessRunner& processes() { return processes_; }
    MainQueue& queue() { return queue_; }
    // The real application ends its process here, whatever waits.
    void terminate() {
        queue_.stop();
        events_.wake();
    }
    bool hasRun(const Command&) {
        return queue_.isStopped() ? havePrinted() : FakeRunLoop::turnUntil([this] { return havePrinted(); });
    }

  private:
    FrameworkRig frameworks_;
    DispatchMainQueue queue_;
    FakeEventQueue events_;
    CFDescriptorLoop loop_{queue_, events_};
    PosixProcessRunner processes_{loop_};
};

INSTANTIATE_TYPED_TEST_SUITE_P(CFDescriptorLoop, ProcessRunnerContract, CFDescriptorLoopDriver);

class CFDescriptorLoopTest : public testing::Test {
  protected:
    std::optional<std::string> output(const std::string& script) {
        return processes_.output({scripts_.make(script), {}});
    }

    FrameworkRig frameworks_;
    DispatchMainQueue queue_;
    FakeEventQueue events_;
    CFDescriptorLoop loop_{queue_, events_};
    PosixProcessRunner processes_{loop_};
    Scripts scripts_;
};

TEST_F(CFDescriptorLoopTest, ReadsBothStreamsCompletelyInTheOrderOfWriting) {
    EXPECT_EQ(output("echo first; echo second >&2; echo third"), "first\nsecond\nthird\n");
    EXPECT_EQ(output("head -c 3000000 /dev/zero").value_or("").size(), 3'000'000U);
}

TEST_F(CFDescriptorLoopTest, WaitsForAProgramThatHasClosedItsPipe) {
    EXPECT_EQ(output("echo written; exec >&- 2>&-; sleep 0.2; : >$here/end"), "written\n");
    EXPECT_TRUE(std::filesystem::exists(scripts_ / "end"));
}

TEST_F(CFDescriptorLoopTest, WaitsForAProgramInsideABlock) {
    std::optional<std::string> text;
    bool hasNextRun = false;
    queue_.async([&] {
        queue_.async([&] { hasNextRun = true; });
        text = output("sleep 0.1; echo written");
        EXPECT_FALSE(hasNextRun) << "the system never runs a block inside another one";
    });
    FakeRunLoop::settle();
    EXPECT_EQ(text, "written\n");
    EXPECT_TRUE(hasNextRun);
}

TEST_F(CFDescriptorLoopTest, SendsTheEventsOfTheApplicationWhileAProgramRuns) {
    const auto click = [this] { std::ofstream(scripts_ / "clicked"); };
    FakeRunLoop::addEvent(click);
    EXPECT_EQ(output("for i in $(seq 500); do test -e $here/clicked && echo clicked && exit; sleep 0.02; done"),
              "clicked\n");
}

TEST_F(CFDescriptorLoopTest, SendsAnEventThatComesWhileItWaits) {
    int clicks = 0;
    const auto task = queue_.asyncAfter(std::chrono::milliseconds(20), [&] {
        FakeRunLoop::addEvent([&] { ++clicks; });
        FakeRunLoop::addEvent([&] { ++clicks; });
    });
    EXPECT_EQ(output("sleep 0.2"), "");
    EXPECT_EQ(clicks, 2);
}

TEST_F(CFDescriptorLoopTest, EndsAWaitWhoseEventCameDuringAnotherOneInABlock) {
    int outer[2];
    int inner[2];
    ASSERT_EQ(::pipe(outer), 0);
    ASSERT_EQ(::pipe(inner), 0);
    std::string ended;
    const auto outerWatch = loop_.watch(outer[0], [&] {
        ended += "outer ";
        EXPECT_EQ(::write(inner[1], "x", 1), 1);
    });
    const auto innerWatch = loop_.watch(inner[0], [&] { ended += "inner "; });
    queue_.async([&] {
        EXPECT_EQ(::write(outer[1], "x", 1), 1);
        loop_.runUntil([&] { return ended.ends_with("inner "); });
    });
    loop_.runUntil([&] { return ended.starts_with("outer "); });
    EXPECT_EQ(ended, "outer inner ");
    for (const int each : {outer[0], outer[1], inner[0], inner[1]}) ::close(each);
}

TEST_F(CFDescriptorLoopTest, ReadsADescriptorWhileAnAlertIsOpen) {
    int pipe[2];
    ASSERT_EQ(::pipe(pipe), 0);
    int fired = 0;
    auto watch = loop_.watch(pipe[0], [&] { ++fired; });
    ASSERT_EQ(::write(pipe[1], "x", 1), 1);
    FakeRunLoop::settle(FakeRunLoop::alertMode());
    EXPECT_EQ(fired, 1);
    FakeRunLoop::settle();
    EXPECT_EQ(fired, 1) << "silent until it is re-enabled";
    watch->rearm();
    FakeRunLoop::settle();
    EXPECT_EQ(fired, 2);
    watch.reset();
    FakeRunLoop::settle();
    EXPECT_EQ(fired, 2);
    ::close(pipe[0]);
    ::close(pipe[1]);
}

TEST_F(CFDescriptorLoopTest, AllowsACallbackToDestroyItsWatch) {
    int pipe[2];
    ASSERT_EQ(::pipe(pipe), 0);
    ::close(pipe[1]);
    bool hasFired = false;
    std::unique_ptr<DescriptorLoop::Watch> watch;
    watch = loop_.watch(pipe[0], [&] {
        watch.reset();
        hasFired = true;
    });
    FakeRunLoop::settle();
    EXPECT_TRUE(hasFired);
    ::close(pipe[0]);
}

TEST_F(CFDescriptorLoopTest, LeavesNoZombieOfAStartedProgram) {
    EXPECT_TRUE(processes_.start({scripts_.make("exit 3"), {}}));
    EXPECT_TRUE(FakeRunLoop::turnUntil([] { return ::waitid(P_ALL, 0, nullptr, WEXITED | WNOHANG | WNOWAIT) != 0; }));
}

TEST_F(CFDescriptorLoopTest, ReportsAProgramThatEndedBeforeTheWatchBegan) {
    Spawn how;
    pid_t process = 0;
    ASSERT_EQ(how.start(scripts_.make("exit 0"), {}, process), 0);
    siginfo_t end{};
    ASSERT_EQ(::waitid(P_PID, static_cast<id_t>(process), &end, WEXITED | WNOWAIT), 0);
    const FileDescriptor ending(openProcessEnd(process));
    ASSERT_TRUE(ending.isOpen());
    bool hasFired = false;
    const auto watch = loop_.watch(ending.number(), [&] { hasFired = true; });
    EXPECT_TRUE(FakeRunLoop::turnUntil([&] { return hasFired; }));
    ::waitpid(process, nullptr, 0);
}

}  // namespace
}  // namespace kovra
