#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <filesystem>

#include "tests/helper/PrivateMachine.h"
#include "tests/helper/ProgramRig.h"

// Tests of ble-kovra-helper as a process, in a chroot with its own /Library and /run. The other folders of the chroot
// are those of this machine. The input devices are simulated.

namespace kovra::helper {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

TEST(ProgramTest, UnmutesThePadOnEachTerminationSignal) {
    inPrivateMachine([](uid_t user) {
        Machine machine(user);
        const auto application = machine.startApplication();
        for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGQUIT, SIGUSR1, SIGUSR2, SIGALRM}) {
            const auto helper = machine.startMuted();
            EXPECT_EQ(helper->end(signal), 0) << signal;
            EXPECT_TRUE(machine.is("0")) << signal;
        }
    });
}

TEST(ProgramTest, UnmutesThePadEvenIfItsLogIsClosed) {
    inPrivateMachine([](uid_t user) {
        Machine machine(user);
        machine.isLogClosed = true;
        const auto application = machine.startApplication();
        const auto helper = machine.startMuted();
        fs::rename(Machine::flagFolder, Machine::flagFolder + ".away");
        EXPECT_EQ(helper->result(), 1);
        EXPECT_TRUE(machine.is("0"));
    });
}

TEST(ProgramTest, RetriesAtItsEndToUnmuteAPadWhoseDriverRefuses) {
    inPrivateMachine([](uid_t user) {
        Machine machine(user);
        const auto application = machine.startApplication();
        const auto helper = machine.startMuted();
        machine.computer.refuseWrites("input5");
        helper->signal(SIGTERM);
        EXPECT_TRUE(helper->keepsRunningFor(500ms));
        machine.computer.acceptWrites("input5", "1");
        EXPECT_EQ(helper->result(), 0);
        EXPECT_TRUE(machine.is("0"));
    });
}

TEST(ProgramTest, LeavesThePadAloneThatAnotherInstanceHasMuted) {
    inPrivateMachine([](uid_t user) {
        Machine machine(user);
        const auto application = machine.startApplication();
        const auto helper = machine.startMuted();
        EXPECT_EQ(machine.start()->result(), 1);
        EXPECT_EQ(machine.start("--release")->result(), 1);
        EXPECT_TRUE(machine.is("1"));
        EXPECT_EQ(helper->end(SIGTERM), 0);
    });
}

TEST(ProgramTest, FollowsTheUserAtTheMachineAndTheApplication) {
    inPrivateMachine([](uid_t user) {
        Machine machine(user);
        auto application = machine.startApplication();
        const auto helper = machine.startMuted();
        Machine::leave();
        EXPECT_TRUE(machine.becomes("0"));
        machine.arrive();
        EXPECT_TRUE(machine.becomes("1"));
        application.reset();
        EXPECT_TRUE(machine.becomes("0"));
        EXPECT_TRUE(helper->isRunning());
    });
}

TEST(ProgramTest, NotifiesTheServiceManagerAndFailsWithoutTheFlagsFolder) {
    inPrivateMachine([](uid_t user) {
        const Machine machine(user);
        const ServiceManager manager(Machine::notifySocketPath);
        const auto helper = machine.start({}, Machine::notifySocket);
        EXPECT_TRUE(manager.receives("READY=1"));
        fs::rename(Machine::flagFolder, Machine::flagFolder + ".away");
        EXPECT_EQ(helper->result(), 1);
    });
}

TEST(ProgramTest, MutesAndUnmutesWhileTheQueueOfTheServiceManagerIsFull) {
    inPrivateMachine([](uid_t user) {
        Machine machine(user);
        const ServiceManager manager(Machine::notifySocketPath);
        manager.fill();
        auto application = machine.startApplication();
        const auto helper = machine.startMuted(Machine::notifySocket);
        application.reset();
        EXPECT_TRUE(machine.becomes("0"));
        EXPECT_TRUE(manager.receives("READY=1"));
        EXPECT_EQ(helper->end(SIGTERM), 0);
    });
}

TEST(ProgramTest, TurnsOnTheWatchdogForAPadThatAnEarlierProcessHasLeftMuted) {
    inPrivateMachine([](uid_t user) {
        Machine machine(user);
        const auto application = machine.startApplication();
        machine.startMuted()->end(SIGKILL);
        machine.computer.refuseWrites("input5");
        Machine::leave();
        const ServiceManager manager(Machine::notifySocketPath);
        const auto helper = machine.start({}, Machine::notifySocket);
        EXPECT_TRUE(manager.receives("WATCHDOG_USEC=6000000"));
        machine.computer.acceptWrites("input5", "1");
        EXPECT_TRUE(manager.receives("WATCHDOG_USEC=0"));
        EXPECT_EQ(helper->end(SIGTERM), 0);
    });
}

TEST(ProgramTest, DelaysItsRestartIfItCannotStart) {
    inPrivateMachine([](uid_t user) {
        const Machine machine(user);
        const ServiceManager manager(Machine::notifySocketPath);
        fs::rename(Machine::root + "/Library", Machine::root + "/elsewhere");
        fs::create_directory_symlink("elsewhere", Machine::root + "/Library");
        EXPECT_EQ(machine.start()->result(), 1);
        const auto helper = machine.start({}, Machine::notifySocket);
        EXPECT_TRUE(manager.receives("STATUS=Cannot start; trying again"));
        EXPECT_TRUE(helper->keepsRunningFor(1500ms));  // half a minute, but not the second after a crash
        EXPECT_EQ(helper->end(SIGTERM), 1);
        fs::remove(Machine::root + "/Library");
        fs::rename(Machine::root + "/elsewhere", Machine::root + "/Library");
        const auto first = machine.start({}, Machine::notifySocket);
        EXPECT_TRUE(manager.receives("READY=1"));
        const auto second = machine.start({}, Machine::notifySocket);
        EXPECT_TRUE(manager.receives("STATUS=Cannot start; trying again"));
        EXPECT_TRUE(second->keepsRunningFor(500ms));
        EXPECT_EQ(second->end(SIGTERM), 1);
    });
}

TEST(ProgramTest, RefusesAnUnknownOption) {
    inPrivateMachine([](uid_t user) {
        const Machine machine(user);
        EXPECT_EQ(machine.start("--mute")->result(), 2);
        EXPECT_EQ(machine.start("--grant")->result(), 2);
        EXPECT_EQ(machine.start("--release", {}, "root")->result(), 2);
    });
}

}  // namespace
}  // namespace kovra::helper
