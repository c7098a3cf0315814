#include <grp.h>
#include <gtest/gtest.h>

#include "tests/helper/AsRoot.h"
#include "tests/helper/PrivateMachine.h"
#include "tests/helper/ProgramRig.h"

// Tests of the program as a process, with --grant.

namespace kovra::helper {
namespace {

TEST(ProgramGrantTest, GivesThePadToTheNamedGroup) {
    runAsRoot([] {
        inPrivateMachine([](uid_t user) {
            const Machine machine(user);
            EXPECT_EQ(machine.start("--grant", {}, "root")->result(), 0);
            EXPECT_EQ(machine.computer.rights("input5").st_gid, 0U);
            EXPECT_EQ(machine.start("--grant", {}, "daemon")->result(), 0);
            EXPECT_EQ(machine.computer.rights("input5").st_gid, ::getgrnam("daemon")->gr_gid);
        });
    });
}

TEST(ProgramGrantTest, FailsToGiveThePadToAGroupThatDoesNotExist) {
    inPrivateMachine([](uid_t user) {
        const Machine machine(user);
        EXPECT_EQ(machine.start("--grant", {}, "nobody-has-this-name")->result(), 1);
    });
}

}  // namespace
}  // namespace kovra::helper
