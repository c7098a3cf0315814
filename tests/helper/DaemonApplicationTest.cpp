#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <memory>
#include <optional>

#include "helper/Daemon.h"
#include "helper/session/ApplicationProcess.h"
#include "helper/session/ApplicationWatch.h"
#include "tests/helper/DaemonRig.h"
#include "tests/helper/ProcessName.h"
#include "tests/helper/RunUntil.h"

namespace kovra::helper {
namespace {

// The application is a real process in these tests.
class DaemonApplicationTest : public testing::Test {
  protected:
    DaemonApplicationTest() {
        rig.start();
        startDaemon();
    }
    ~DaemonApplicationTest() override { kill(SIGKILL); }

    void startDaemon() {
        rig.daemon = std::make_unique<Daemon>(
            rig.flag.loop(),
            Daemon::Session{.activeUser = [this] { return atMachine; },
                            .heldApplicationStart = [this](uid_t of) { return application.heldStartOf(of); },
                            .applicationStart = [this](uid_t of) { return application.startOf(of); },
                            .releaseApplication = [this] { application.release(); }},
            rig.flag.folder(), *rig.touchpads, *rig.muter);
        application.onChange = [this] { rig.daemon->evaluate(); };
        rig.daemon->evaluate();
    }
    // Restarts the daemon as after a crash, without unmuting the pads.
    void restartDaemon() {
        rig.kill();
        application.release();
        rig.flag.reopen();
        rig.activeUser = atMachine;  // so that the rig's own daemon hands nothing over
        rig.start();
        startDaemon();
    }

    // Starts the application, and lets the daemon find it.
    void startApplication() {
        startUnnoticed();
        ASSERT_TRUE(rig.flag.runUntil([&] { return application.startOf(user).has_value(); }));
        rig.daemon->evaluate();
    }
    void startUnnoticed() {
        process = ::fork();
        ASSERT_GE(process, 0);
        if (process == 0) {
            if (::geteuid() == 0 && ::setresuid(user, user, user) != 0) ::_exit(1);
            takeName("ble-kovra");
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            while (true) ::pause();
        }
        while (!applicationOf(user, process)) ::usleep(1'000);
    }
    void kill(int signal) {
        if (process <= 0) return;
        ::kill(process, signal);
        if (signal != SIGKILL) return;
        ::waitpid(process, nullptr, 0);
        process = 0;
    }

    // Waits until a process that is started now has a later start than a file that was written before this call. The
    // kernel rounds both times by up to 10 ms each.
    void awaitAnotherTime() { rig.flag.runFor(std::chrono::milliseconds(40)); }

    DaemonRig rig;
    const uid_t user = ::geteuid() == 0 ? alice : ::geteuid();
    std::optional<uid_t> atMachine = user;
    ApplicationWatch application{rig.flag.loop()};
    pid_t process = 0;
};

TEST_F(DaemonApplicationTest, ThatIsKilledUnmutesThePad) {
    startApplication();
    rig.flag.write(user, "on");
    ASSERT_TRUE(rig.becomes("1"));
    kill(SIGKILL);
    EXPECT_TRUE(rig.becomes("0"));
    EXPECT_EQ(rig.flag.content(), "on");
}

TEST_F(DaemonApplicationTest, ThatIsStoppedChangesNothing) {
    startApplication();
    rig.flag.write(user, "on");
    ASSERT_TRUE(rig.becomes("1"));
    kill(SIGSTOP);
    ::waitpid(process, nullptr, WUNTRACED);
    handleEvents(rig.flag.loop());
    rig.daemon->evaluate();
    EXPECT_TRUE(rig.is("1"));
    kill(SIGCONT);
}

TEST_F(DaemonApplicationTest, ThatStartsAfterAKilledOneDoesNotMuteByTheWordThatThatOneHasLeft) {
    startApplication();
    rig.flag.write(user, "on");
    ASSERT_TRUE(rig.becomes("1"));
    kill(SIGKILL);
    ASSERT_TRUE(rig.becomes("0"));
    awaitAnotherTime();
    startApplication();
    EXPECT_TRUE(rig.is("0"));
    rig.flag.write(user, "on");
    EXPECT_TRUE(rig.becomes("1"));
}

TEST_F(DaemonApplicationTest, ThatStartsBeforeTheEndOfAnotherIsNoticedDoesNotKeepThePadMuted) {
    startApplication();
    rig.flag.write(user, "on");
    ASSERT_TRUE(rig.becomes("1"));
    awaitAnotherTime();
    const pid_t first = process;
    startUnnoticed();
    ::kill(first, SIGKILL);
    ::waitpid(first, nullptr, 0);
    EXPECT_TRUE(rig.becomes("0"));
    rig.flag.write(user, "on");
    EXPECT_TRUE(rig.becomes("1"));
}

TEST_F(DaemonApplicationTest, KeepsItsWordWhenTheDaemonIsRestarted) {
    startApplication();
    awaitAnotherTime();
    rig.flag.write(user, "on");
    ASSERT_TRUE(rig.becomes("1"));
    restartDaemon();
    EXPECT_TRUE(rig.becomes("1"));
}

TEST_F(DaemonApplicationTest, KeepsItsWordWhenItsUserReturns) {
    startApplication();
    rig.flag.write(user, "on");
    ASSERT_TRUE(rig.becomes("1"));
    atMachine = std::nullopt;
    rig.daemon->evaluate();
    ASSERT_TRUE(rig.becomes("0"));
    atMachine = user;
    rig.daemon->evaluate();
    EXPECT_TRUE(rig.becomes("1"));
}

TEST_F(DaemonApplicationTest, ThatStartsWhileItsUserIsAwayDoesNotMuteByTheWordThatAKilledOneHasLeft) {
    startApplication();
    rig.flag.write(user, "on");
    ASSERT_TRUE(rig.becomes("1"));
    atMachine = std::nullopt;
    rig.daemon->evaluate();
    kill(SIGKILL);
    awaitAnotherTime();
    atMachine = user;
    startApplication();
    EXPECT_EQ(rig.flag.content(), "on");
    EXPECT_TRUE(rig.is("0"));
    rig.flag.write(user, "on");
    EXPECT_TRUE(rig.becomes("1"));
}

TEST_F(DaemonApplicationTest, ThatStartsAgainMutesAgain) {
    startApplication();
    rig.flag.write(user, "on");
    ASSERT_TRUE(rig.becomes("1"));
    kill(SIGKILL);
    ASSERT_TRUE(rig.becomes("0"));
    startApplication();
    rig.flag.write(user, "on");
    EXPECT_TRUE(rig.becomes("1"));
}

}  // namespace
}  // namespace kovra::helper
