#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <functional>

#include "BLE_kovra/platform/posix/PosixProcessRunner.h"
#include "tests/contracts/ProcessRunnerContract.h"
#include "tests/support/posix/OwnProcess.h"
#include "tests/support/posix/ScriptedPrograms.h"
#include "tests/support/posix/Scripts.h"
#if defined(__APPLE__)
#include "tests/platform/macos/loop/LoopOnMac.h"
#else
#include "tests/platform/linux/loop/LoopRig.h"
#include "tests/platform/linux/loop/Turns.h"
#include "tests/support/linux/NoDescriptors.h"
#endif

namespace kovra {
namespace {

using namespace std::chrono_literals;

class PosixProcessRunnerDriver : public ScriptedPrograms {
  public:
    ProcessRunner& processes() { return processes_; }
    MainQueue& queue() { return rig_.queue(); }
    void terminate() { rig_.stop(); }
    bool hasRun(const Command&) {
        return rig_.loop().isStopped() ? havePrinted() : rig_.turnUntil([this] { return havePrinted(); });
    }

  private:
    LoopRig rig_;
    PosixProcessRunner processes_{rig_.loop()};
};

INSTANTIATE_TYPED_TEST_SUITE_P(PosixProcessRunner, ProcessRunnerContract, PosixProcessRunnerDriver);

class PosixProcessRunnerTest : public testing::Test {
  protected:
    void TearDown() override { ScriptedPrograms::waitForAll(); }
    std::optional<std::string> output(const std::string& script) {
        return processes_.output({scripts_.make(script), {}});
    }
    // Waits for the condition without running the loop under test. Returns whether the condition holds.
    static bool sees(const std::function<bool()>& condition) {
        const auto end = std::chrono::steady_clock::now() + 20s;
        while (!condition() && std::chrono::steady_clock::now() < end) ::poll(nullptr, 0, 5);
        return condition();
    }
    // Waits until all children have ended. Reaps them as init does: this program may be the first process of a
    // namespace, and then gets the children of the programs that it has run.
    static bool hasNoChildrenSoon() {
        return sees([] {
            ::waitpid(-1, nullptr, WNOHANG);
            return !hasChildren();
        });
    }
    pid_t pid() const { return std::stoi("0" + scripts_.read("pid")); }
    bool isRunning() const { return pid() != 0 && ::kill(pid(), 0) == 0; }

    Scripts scripts_;
    LoopRig rig_;
    PosixProcessRunner processes_{rig_.loop()};
};

TEST_F(PosixProcessRunnerTest, ReturnsBothStreamsInTheOrderOfWriting) {
    EXPECT_EQ(output("echo first; echo second >&2; echo third; echo fourth >&2"), "first\nsecond\nthird\nfourth\n");
}

TEST_F(PosixProcessRunnerTest, ReturnsASingleByte) { EXPECT_EQ(output("printf x"), "x"); }

TEST_F(PosixProcessRunnerTest, ReturnsMoreThanAPipeHolds) {
    const auto text = output("head -c 10485760 /dev/zero");
    ASSERT_TRUE(text);
    EXPECT_EQ(text->size(), 10485760U);
    EXPECT_EQ(text->find_first_not_of('\0'), std::string::npos);
}

TEST_F(PosixProcessRunnerTest, TerminatesAProgramThatWritesTooMuch) {
    const auto before = openDescriptors();
    PosixProcessRunner bounded(rig_.loop(), 100'000);
    const auto written = [&](const std::string& script) { return bounded.output({scripts_.make(script), {}}); };
    EXPECT_EQ(written("head -c 100000 /dev/zero; sleep 0.2; : >$here/all").value_or("").size(), 100'000U);
    EXPECT_TRUE(std::filesystem::exists(scripts_ / "all"));
    EXPECT_EQ(written("head -c 100001 /dev/zero"), std::nullopt);
    EXPECT_EQ(written("echo $$ >$here/pid; exec yes"), std::nullopt);
    EXPECT_FALSE(isRunning());
    EXPECT_EQ(written("(until grep -q stopped /proc/$$/status; do :; done; head -c 100001 /dev/zero) & kill -STOP $$"),
              std::nullopt);
    // The runner also closes the pipe if the program ignores SIGTERM, or if a child has inherited the pipe.
    EXPECT_EQ(written("trap '' TERM; yes; : >$here/end"), std::nullopt);
    EXPECT_TRUE(std::filesystem::exists(scripts_ / "end"));
    EXPECT_EQ(written("echo $$ >$here/pid; yes & exit 0"), std::nullopt);
    EXPECT_FALSE(isRunning());
    EXPECT_TRUE(hasNoChildrenSoon());
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(PosixProcessRunnerTest, ReturnsTheOutputWhateverTheExitStatus) {
    EXPECT_EQ(output("echo written; exit 7"), "written\n");
    EXPECT_EQ(output("echo written; kill -9 $$"), "written\n");
    EXPECT_EQ(output("printf written; kill -TERM $$"), "written");
}

TEST_F(PosixProcessRunnerTest, WaitsForAProgramThatClosedItsPipe) {
    EXPECT_EQ(output("echo written; exec >&- 2>&-; sleep 0.2; : >$here/end"), "written\n");
    EXPECT_TRUE(std::filesystem::exists(scripts_ / "end"));
}

TEST_F(PosixProcessRunnerTest, ReadsUntilEveryWriterHasClosedThePipe) {
    EXPECT_EQ(output("echo first; (sleep 0.2; echo late) & exit 0"), "first\nlate\n");
}

TEST_F(PosixProcessRunnerTest, ReturnsNullIfTheProgramCannotBeStarted) {
    EXPECT_EQ(processes_.output({scripts_ / "missing", {}}), std::nullopt);
    writeFile(scripts_ / "not for running", "#!/bin/sh\n");
    EXPECT_EQ(processes_.output({scripts_ / "not for running", {}}), std::nullopt);
    EXPECT_EQ(processes_.output({scripts_ / "", {}}), std::nullopt);
    writeFile(scripts_ / "no program", "");
    ::chmod((scripts_ / "no program").c_str(), 0755);
    EXPECT_EQ(processes_.output({scripts_ / "no program", {}}), std::nullopt);
}

TEST_F(PosixProcessRunnerTest, PassesArgumentsLiterally) {
    const Command program{scripts_.make(R"(printf '%s|' "$#" "$@")"), {"a b", "", "$HOME; `id`", "-n", "\"\n"}};
    EXPECT_EQ(processes_.output(program), "5|a b||$HOME; `id`|-n|\"\n|");
}

TEST_F(PosixProcessRunnerTest, LeavesNoZombieAndNoDescriptor) {
    const auto before = openDescriptors();
    EXPECT_TRUE(output("echo written"));
    EXPECT_EQ(processes_.output({scripts_ / "missing", {}}), std::nullopt);
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(PosixProcessRunnerTest, TerminatesTheProgramIfTheApplicationTerminatesFirst) {
    rig_.queue().asyncAfter(0s, [this] {
        EXPECT_TRUE(sees([this] { return isRunning(); }));
        rig_.stop();
    });
    EXPECT_EQ(output("echo $$ >$here/pid; exec sleep 1000"), std::nullopt);
    EXPECT_TRUE(hasNoChildrenSoon());
    EXPECT_FALSE(isRunning());
}

TEST_F(PosixProcessRunnerTest, StartsAProgramWithOurStreams) {
    for (const int stream : {STDOUT_FILENO, STDERR_FILENO}) {
        int ends[2];
        ASSERT_EQ(::pipe(ends), 0);
        const int before = ::dup(stream);
        ::dup2(ends[1], stream);
        EXPECT_TRUE(processes_.start({scripts_.make("echo written >&" + std::to_string(stream)), {}}));
        ::dup2(before, stream);
        ::close(before);
        ::close(ends[1]);
        char text[16]{};
        EXPECT_EQ(::read(ends[0], text, sizeof text), 8);
        EXPECT_STREQ(text, "written\n");
        ::close(ends[0]);
    }
}

TEST_F(PosixProcessRunnerTest, ReapsAStartedProgramWithoutWaiting) {
    const auto before = openDescriptors();
    EXPECT_TRUE(
        processes_.start({scripts_.make("echo $$ >$here/pid; while ! [ -e $here/go ]; do sleep 0.02; done"), {}}));
    EXPECT_TRUE(sees([this] { return isRunning(); }));
    writeFile(scripts_ / "go", "");
    EXPECT_TRUE(rig_.turnUntil([this] { return !isRunning(); }));
    EXPECT_FALSE(hasChildren());
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(PosixProcessRunnerTest, StartsAProgramThatSurvivesUs) {
    {
        LoopRig rig;
        PosixProcessRunner processes(rig.loop());
        EXPECT_TRUE(processes.start(
            {scripts_.make("echo $$ >$here/pid; while ! [ -e $here/go ]; do sleep 0.02; done; : >$here/end"), {}}));
        EXPECT_TRUE(sees([this] { return isRunning(); }));
        rig.stop();
    }
    EXPECT_EQ(::getsid(pid()), pid()) << "what ends us from the terminal would end it";
    writeFile(scripts_ / "go", "");
    EXPECT_TRUE(sees([this] { return std::filesystem::exists(scripts_ / "end"); }));
    ::waitpid(pid(), nullptr, 0);
}

TEST_F(PosixProcessRunnerTest, ReturnsTheSystemsReasonIfAProgramCannotBeStarted) {
    EXPECT_EQ(processes_.start({scripts_ / "missing", {}}).reason(), std::strerror(ENOENT));
    writeFile(scripts_ / "not for running", "#!/bin/sh\n");
    EXPECT_EQ(processes_.start({scripts_ / "not for running", {}}).reason(), std::strerror(EACCES));
    writeFile(scripts_ / "no program", "");
    ::chmod((scripts_ / "no program").c_str(), 0755);
    EXPECT_EQ(processes_.start({scripts_ / "no program", {}}).reason(), std::strerror(ENOEXEC));
}

#if !defined(__APPLE__)  // these look into /proc, and count the loop's turns

TEST_F(PosixProcessRunnerTest, StartsWithDefaultHandlersAndNoDescriptorOfOurs) {
    const auto term = rig_.loop().onSignal(SIGTERM, [] {});  // blocks SIGTERM while it exists
    const auto before = std::signal(SIGPIPE, SIG_IGN);
    const int leaking = ::dup(STDERR_FILENO);
    const std::string report = "cat /proc/self/status; echo descriptors: $(ls /proc/self/fd)";
    const auto seen = output(report);
    EXPECT_TRUE(processes_.start({scripts_.make("(" + report + ") >$here/started; : >$here/end"), {}}));
    EXPECT_TRUE(rig_.turnUntil([this] { return std::filesystem::exists(scripts_ / "end"); }));
    ::close(leaking);
    std::signal(SIGPIPE, before);
    for (const std::string& status : {seen.value_or(""), scripts_.read("started")}) {
        for (const std::string name : {"SigBlk:", "SigIgn:", "SigCgt:"}) {
            // Only the first 31 signals count: the C library always ignores two of the others.
            const auto digits = status.substr(std::min(status.size(), status.find(name) + name.size()));
            EXPECT_EQ(std::stoull("0" + digits, nullptr, 16) & 0x7fffffffU, 0U) << name << status;
        }
        // Descriptor 3 is the folder that ls reads.
        EXPECT_TRUE(status.ends_with("descriptors: 0 1 2 3\n")) << status;
    }
}

TEST_F(PosixProcessRunnerTest, SleepsWhileAProgramHangsEvenIfItHasClosedItsPipe) {
    for (const char* program : {"exec sleep 1000", "exec sleep 1000 >&- 2>&-"}) {
        LoopRig rig;
        PosixProcessRunner processes(rig.loop());
        int turns = -1;
        rig.loop().asyncAfter(0s, [&] {
            EXPECT_TRUE(sees([this] { return isRunning(); }));
            turns = turnsWithin(rig.loop(), 300ms);
            rig.stop();
        });
        EXPECT_EQ(processes.output({scripts_.make("echo $$ >$here/pid; " + std::string(program)), {}}), std::nullopt);
        EXPECT_GE(turns, 0);
        EXPECT_LT(turns, 5) << program;
    }
}

TEST_F(PosixProcessRunnerTest, StartsNothingAfterTheEnd) {
    rig_.stop();
    EXPECT_EQ(output("exec sleep 20"), std::nullopt);
    EXPECT_FALSE(hasChildren());
}

TEST_F(PosixProcessRunnerTest, ReturnsNullWithoutAPipe) {
    const std::string program = scripts_.make("echo written");
    // A sanitizer opens descriptors when it first checks a type.
    EXPECT_TRUE(processes_.output({program, {}}));
    const auto before = openDescriptors();
    {
        const NoDescriptors scope;
        EXPECT_EQ(processes_.output({program, {}}), std::nullopt);
    }
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(PosixProcessRunnerTest, LeavesNoProcessBehindIfItsEndCannotBeWatched) {
    const std::string program = scripts_.make("exec sleep 20");
    // A sanitizer opens descriptors when it first checks a type.
    EXPECT_FALSE(processes_.start({scripts_ / "missing", {}}));
    {
        const NoDescriptors scope;
        EXPECT_EQ(processes_.start({program, {}}).reason(), std::strerror(EMFILE));
    }
    EXPECT_FALSE(hasChildren());
}

#endif

}  // namespace
}  // namespace kovra
