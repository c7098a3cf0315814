#include <fcntl.h>
#include <gtest/gtest.h>
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

// Hands the flag over in a child process in which each change of an access control list fails with ENOSPC. Returns the
// error of the hand-over.
int handOverRefused(const FlagRig& rig, std::optional<uid_t> user) {
    const Descriptor folder(::open(rig.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const pid_t process = ::fork();
    if (process == 0) ::_exit(answerAccessListsWith(ENOSPC) ? handOverFlag(folder.number(), ::geteuid(), user) : 255);
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
        EXPECT_EQ(handOverRefused(rig, next), ENOSPC);
        // The flag still belongs to Alice, because her right to write it could not be revoked.
        EXPECT_TRUE(rig.folder().isFlagOf(alice));
        EXPECT_TRUE(rig.isOn());
        EXPECT_EQ(rig.names(), (Names{"state", "state.left.61002"}));
        ASSERT_TRUE(rig.handOver(bob));
        ASSERT_TRUE(rig.handOver(alice));
        EXPECT_TRUE(rig.isOn());
    }
}

}  // namespace
}  // namespace kovra::helper
