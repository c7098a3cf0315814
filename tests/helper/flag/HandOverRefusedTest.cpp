#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <set>
#include <string>

#include "helper/Descriptor.h"
#include "helper/flag/HandOver.h"
#include "tests/helper/Users.h"
#include "tests/helper/flag/AccessListFilter.h"
#include "tests/helper/flag/FlagRig.h"

namespace kovra::helper {
namespace {

using Names = std::set<std::string>;

// Hands the flag over in a child process in which each system call with this number fails with this error. Returns the
// error of the hand-over.
int handOverRefused(const FlagRig& rig, std::optional<uid_t> user, unsigned int call, unsigned int error) {
    const Descriptor folder(::open(rig.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const pid_t process = ::fork();
    if (process == 0) ::_exit(answerCallsWith(call, error) ? handOverFlag(folder.number(), ::geteuid(), user) : 255);
    int status = 0;
    ::waitpid(process, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(HandOverRefusedTest, KeepsTheFlagOfAUserWhoseRightCannotBeRevoked) {
    for (const std::optional<uid_t> next : {std::optional<uid_t>(bob), std::optional<uid_t>()}) {
        FlagRig rig;
        rig.handOver(alice);
        rig.write(alice, "on");
        rig.handOver(bob);
        rig.handOver(alice);
        EXPECT_EQ(handOverRefused(rig, next, SYS_fsetxattr, ENOSPC), ENOSPC);
        // The flag still belongs to Alice, because her right to write it could not be revoked.
        EXPECT_TRUE(rig.folder().isFlagOf(alice));
        EXPECT_TRUE(rig.isOn());
        EXPECT_EQ(rig.names(), (Names{"state", "state.left.61002"}));
        ASSERT_TRUE(rig.handOver(bob));
        ASSERT_TRUE(rig.handOver(alice));
        EXPECT_TRUE(rig.isOn());
    }
}

TEST(HandOverRefusedTest, KeepsTheFileOfAUserWhoHasGivenItAllTheNamesThatAreAllowed) {
    FlagRig rig;
    rig.handOver(alice);
    rig.write(alice, "on");
    EXPECT_EQ(handOverRefused(rig, bob, SYS_linkat, EMLINK), 0);
    EXPECT_TRUE(rig.folder().isFlagOf(bob));
    EXPECT_FALSE(rig.isOn());
    EXPECT_EQ(rig.names(), (Names{"state", "state.left.61001"}));
    ASSERT_TRUE(rig.handOver(alice));
    EXPECT_TRUE(rig.isOn());
}

// The file that a user has left cannot be opened then. It is still theirs.
TEST(HandOverRefusedTest, KeepsTheLeftFilesWhileThereAreNoDescriptors) {
    for (const int error : {EMFILE, ENFILE}) {
        FlagRig rig;
        rig.handOver(alice);
        rig.write(alice, "on");
        rig.handOver(bob);
        rig.write(bob, "on");
        EXPECT_EQ(handOverRefused(rig, alice, SYS_openat, error), error);
        EXPECT_EQ(rig.names(), (Names{"state", "state.left.61001"}));
        EXPECT_TRUE(rig.folder().isFlagOf(bob));
        ASSERT_TRUE(rig.handOver(alice));
        EXPECT_TRUE(rig.isOn());
        ASSERT_TRUE(rig.handOver(bob));
        EXPECT_TRUE(rig.isOn());
    }
}

}  // namespace
}  // namespace kovra::helper
