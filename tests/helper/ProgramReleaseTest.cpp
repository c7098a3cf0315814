#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>

#include "tests/helper/PrivateMachine.h"
#include "tests/helper/ProgramRig.h"

// Tests of the program as a process, with --release.

namespace kovra::helper {
namespace {

namespace fs = std::filesystem;

TEST(ProgramReleaseTest, UnmutesWhatAKilledProcessHasLeft) {
    inPrivateMachine([](uid_t user) {
        Machine machine(user);
        const auto application = machine.startApplication();
        machine.startMuted()->end(SIGKILL);
        EXPECT_TRUE(machine.is("1"));
        EXPECT_EQ(machine.start("--release")->result(), 0);
        EXPECT_TRUE(machine.is("0"));
        EXPECT_EQ(machine.start("--release")->result(), 0);
    });
}

TEST(ProgramReleaseTest, FailsIfThePadCannotBeUnmuted) {
    inPrivateMachine([](uid_t user) {
        Machine machine(user);
        const auto application = machine.startApplication();
        machine.startMuted()->end(SIGKILL);
        machine.computer.refuseWrites("input5");
        EXPECT_EQ(machine.start("--release")->result(), 1);
    });
}

TEST(ProgramReleaseTest, HasNothingToReleaseWithoutAListOfMutedPadsAndFailsIfItCannotBeRead) {
    inPrivateMachine([](uid_t user) {
        const Machine machine(user);
        EXPECT_EQ(machine.start("--release")->result(), 0);
        const fs::path folder = Machine::root + "/run/ble-kovra-helper";
        EXPECT_FALSE(fs::exists(folder));
        fs::create_directory(folder);
        fs::create_directory_symlink("/", folder / "pads");
        const ServiceManager manager(Machine::notifySocketPath);
        EXPECT_EQ(machine.start("--release", Machine::notifySocket)->result(), 1);
    });
}

}  // namespace
}  // namespace kovra::helper
