#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <memory>
#include <optional>

#include "helper/Daemon.h"
#include "helper/session/ApplicationWatch.h"
#include "tests/helper/DaemonRig.h"

namespace kovra::helper {
namespace {

// Who is at the machine, and whether their application lives.
class HelperDaemonPeople : public testing::Test {
  protected:
    Descriptor openedBy(uid_t user) const {
        const Being application(user);
        return Descriptor(::open(rig.flag.state().c_str(), O_WRONLY | O_CLOEXEC));
    }

    DaemonRig rig;
};

TEST_F(HelperDaemonPeople, GivesThePadBackWhenTheApplicationEndsAndLeavesTheFlagAlone) {
    rig.startMuted();
    rig.ends(alice);
    EXPECT_TRUE(rig.is("0"));
    EXPECT_EQ(rig.flag.content(), "on");
}

TEST_F(HelperDaemonPeople, MutesNothingWithoutTheApplication) {
    rig.start();
    rig.atTheMachine = alice;
    rig.daemon->evaluate();
    rig.flag.write(alice, "on");
    rig.settle();
    EXPECT_TRUE(rig.is("0"));
}

TEST_F(HelperDaemonPeople, HasFoundTheApplicationBeforeTheFlagSaysOn) {
    rig.start();
    rig.sitsDown(alice);
    EXPECT_EQ(rig.askedFor, alice);
}

TEST_F(HelperDaemonPeople, ForgetsTheApplicationOnceNobodyIsThere) {
    rig.startMuted();
    rig.forgotten = 0;
    rig.settle();
    EXPECT_EQ(rig.forgotten, 0);
    rig.sitsDown(std::nullopt);
    EXPECT_GT(rig.forgotten, 0);
}

TEST_F(HelperDaemonPeople, GivesThePadBackWhenNobodyIsThereAnyMore) {
    rig.startMuted();
    rig.sitsDown(std::nullopt);
    EXPECT_TRUE(rig.is("0"));
    EXPECT_FALSE(mayWrite(alice, rig.flag.state()));
}

TEST_F(HelperDaemonPeople, GivesTheNextUserAFlagOfTheirOwnThatIsOff) {
    rig.startMuted();
    rig.sitsDown(bob);
    EXPECT_TRUE(rig.is("0"));
    EXPECT_EQ(rig.flag.content(), "off");
    EXPECT_TRUE(mayWrite(bob, rig.flag.state()));
    EXPECT_FALSE(mayWrite(alice, rig.flag.state()));
}

TEST_F(HelperDaemonPeople, MutesAgainForTheUserWhoReturns) {
    rig.startMuted();
    rig.sitsDown(bob);
    ASSERT_TRUE(rig.is("0"));
    rig.sitsDown(alice);
    EXPECT_TRUE(rig.is("1"));
    EXPECT_TRUE(mayWrite(alice, rig.flag.state()));
    EXPECT_FALSE(mayWrite(bob, rig.flag.state()));
}

TEST_F(HelperDaemonPeople, DoesNotMuteForAUserWhoseApplicationWroteOffWhileTheyWereAway) {
    rig.startMuted();
    const Descriptor kept = openedBy(alice);
    rig.sitsDown(bob);
    FlagRig::writeTo(kept, "off");
    rig.sitsDown(alice);
    EXPECT_TRUE(rig.is("0"));
    EXPECT_EQ(rig.flag.content(), "off");
}

TEST_F(HelperDaemonPeople, IsNotMovedByAnOpenDescriptorOfTheUserBefore) {
    rig.startMuted();
    const Descriptor kept = openedBy(alice);
    rig.sitsDown(bob);
    FlagRig::writeTo(kept, "off");
    FlagRig::writeTo(kept, "on");
    rig.settle();
    EXPECT_TRUE(rig.is("0"));
    EXPECT_EQ(rig.flag.content(), "off");
}

// With a process that is really there.
class HelperDaemonProcess : public testing::Test {
  protected:
    HelperDaemonProcess() {
        rig.start();
        rig.daemon = std::make_unique<Daemon>(
            rig.flag.loop(),
            Daemon::People{.atTheMachine = [this] { return std::optional(user); },
                           .runsTheApplication = [this](uid_t of) { return application.lives(of); },
                           .forgetTheApplication = [this] { application.forget(); }},
            rig.flag.folder(), *rig.touchpads, *rig.muter);
        application.onEnd = [this] { rig.daemon->evaluate(); };
        rig.daemon->evaluate();
    }
    ~HelperDaemonProcess() override { kill(SIGKILL); }

    void startApplication() {
        process = ::fork();
        ASSERT_GE(process, 0);
        if (process == 0) {
            if (::geteuid() == 0 && ::setresuid(user, user, user) != 0) ::_exit(1);
            ::prctl(PR_SET_NAME, "ble-kovra");
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            while (true) ::pause();
        }
        ASSERT_TRUE(rig.flag.waitUntil([&] { return application.lives(user); }));
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

TEST_F(HelperDaemonProcess, ThatIsKilledGivesThePadBackWithinASecond) {
    startApplication();
    rig.flag.write(user, "on");
    ASSERT_TRUE(rig.becomes("1"));
    const auto killed = std::chrono::steady_clock::now();
    kill(SIGKILL);
    EXPECT_TRUE(rig.becomes("0"));
    EXPECT_LT(std::chrono::steady_clock::now() - killed, std::chrono::seconds(1));
    EXPECT_EQ(rig.flag.content(), "on");
}

TEST_F(HelperDaemonProcess, ThatIsStoppedChangesNothing) {
    startApplication();
    rig.flag.write(user, "on");
    ASSERT_TRUE(rig.becomes("1"));
    kill(SIGSTOP);
    rig.settle();
    rig.daemon->evaluate();
    EXPECT_TRUE(rig.is("1"));
    kill(SIGCONT);
}

TEST_F(HelperDaemonProcess, ThatStartsAgainMutesAgain) {
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
