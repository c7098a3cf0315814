#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <memory>
#include <optional>

#include "helper/Daemon.h"
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
        rig.daemon = std::make_unique<Daemon>(
            rig.flag.loop(),
            Daemon::Session{.activeUser = [this] { return std::optional(user); },
                            .isApplicationRunning = [this](uid_t of) { return application.isRunning(of); },
                            .releaseApplication = [this] { application.release(); }},
            rig.flag.folder(), *rig.touchpads, *rig.muter);
        application.onChange = [this] { rig.daemon->evaluate(); };
        rig.daemon->evaluate();
    }
    ~DaemonApplicationTest() override { kill(SIGKILL); }

    void startApplication() {
        process = ::fork();
        ASSERT_GE(process, 0);
        if (process == 0) {
            if (::geteuid() == 0 && ::setresuid(user, user, user) != 0) ::_exit(1);
            takeName("ble-kovra");
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            while (true) ::pause();
        }
        ASSERT_TRUE(rig.flag.runUntil([&] { return application.isRunning(user); }));
    }
    void kill(int signal) {
        if (process <= 0) return;
        ::kill(process, signal);
        if (signal != SIGKILL) return;
        ::waitpid(process, nullptr, 0);
        process = 0;
    }

    DaemonRig rig;
    const uid_t user = ::geteuid() == 0 ? alice : ::geteuid();
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
