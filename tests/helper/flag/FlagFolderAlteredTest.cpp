#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <exception>
#include <optional>

#include "helper/flag/FlagFolder.h"
#include "tests/helper/Users.h"
#include "tests/helper/flag/AccessListFilter.h"
#include "tests/helper/flag/FlagRig.h"

namespace kovra::helper {
namespace {

// Returns whether a hand-over fails on a file system that ignores a new access control list. A system call filter
// simulates this file system. The filter stays until the process ends, so each check needs a process of its own.
bool failsWhereListsAreAltered(std::optional<uid_t> user) try {
    FlagRig rig;
    return rig.handOver(bob) && answerAccessListsWith(0) && !rig.handOver(user) && !rig.folder().isFlagOf(user);
} catch (const std::exception&) {
    return false;
}

TEST(FlagFolderAlteredTest, AccessListMakesTheHandOverFail) {
    for (const std::optional<uid_t> user : {std::optional<uid_t>(alice), std::optional<uid_t>()}) {
        const pid_t process = ::fork();
        if (process == 0) ::_exit(failsWhereListsAreAltered(user) ? 0 : 1);
        int status = 0;
        ASSERT_EQ(::waitpid(process, &status, 0), process);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
}

}  // namespace
}  // namespace kovra::helper
