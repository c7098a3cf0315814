// Runs the tests in a PID namespace of their own. They start processes that look like a user's application, and the
// helper would also find a process of that kind that another program has started. An ordinary user cannot have such a
// namespace together with that user's own UID, and runs the tests beside all other processes.
//
// Both processes end with _exit(), because LeakSanitizer, which exit() runs, cannot trace them.

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

#include "tests/helper/PrivateMachine.h"

int main(int count, char** arguments) {
    testing::InitGoogleTest(&count, arguments);
    const bool isPrivate = ::geteuid() == 0 && !GTEST_FLAG_GET(list_tests) &&
                           ::unshare(CLONE_NEWNS | CLONE_NEWPID) == 0 && kovra::helper::makeMountsPrivate();
    if (!isPrivate) return RUN_ALL_TESTS();
    std::fflush(nullptr);
    const pid_t tests = ::fork();
    if (tests == 0) {
        const bool isMounted = ::mount("proc", "/proc", "proc", 0, nullptr) == 0;
        if (!isMounted) std::perror("/proc");
        const int result = isMounted ? RUN_ALL_TESTS() : 1;
        std::fflush(nullptr);
        ::_exit(result);
    }
    int status = -1;
    ::waitpid(tests, &status, 0);
    ::_exit(WIFEXITED(status) ? WEXITSTATUS(status) : 1);
}
