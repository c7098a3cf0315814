#include "helper/session/ApplicationProcess.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <string>

#include "tests/helper/PrivateMachine.h"
#include "tests/helper/ProcessName.h"
#include "tests/helper/session/WaitingProcess.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra::helper {
namespace {

TEST(ApplicationProcessTest, IsCalledAndWasStartedAsTheApplication) {
    inPrivateMachine([](uid_t user) {
        const WaitingProcess application(user, named("ble-kovra"));
        const WaitingProcess onlyCalled(user, [] { ::prctl(PR_SET_NAME, "ble-kovra"); });
        const WaitingProcess onlyStarted(user, [] {
            takeName("ble-kovra");
            ::prctl(PR_SET_NAME, "another");
        });
        EXPECT_TRUE(applicationOf(user, application.number()));
        EXPECT_FALSE(applicationOf(user + 1, application.number()));
        EXPECT_FALSE(applicationOf(user, onlyCalled.number()));
        EXPECT_FALSE(applicationOf(user, onlyStarted.number()));
    });
}

TEST(ApplicationProcessTest, IsNoScriptWithItsName) {
    inPrivateMachine([](uid_t user) {
        const TempFolder folder;
        ASSERT_EQ(::chmod(folder.path().c_str(), 0755), 0);
        const std::string script = folder / "ble-kovra";
        writeFile(script, "#!/bin/sh\necho x\nread forever\n");
        ASSERT_EQ(::chmod(script.c_str(), 0755), 0);
        int output[2];
        int input[2];
        ASSERT_EQ(::pipe(output), 0);
        ASSERT_EQ(::pipe(input), 0);
        const pid_t number = ::fork();
        if (number == 0) {
            ::dup2(input[0], STDIN_FILENO);
            ::dup2(output[1], STDOUT_FILENO);
            if (::setresuid(user, user, user) == 0) ::execl(script.c_str(), script.c_str(), nullptr);
            ::_exit(1);
        }
        char isRunning = 0;
        ASSERT_EQ(::read(output[0], &isRunning, 1), 1);
        ASSERT_EQ(processStatus(number)->name, "ble-kovra");
        EXPECT_FALSE(applicationOf(user, number));
        ::kill(number, SIGKILL);
        ::waitpid(number, nullptr, 0);
    });
}

TEST(ApplicationProcessTest, IsNoProcessOfAContainer) {
    inPrivateMachine([](uid_t user) {
        const WaitingProcess otherUsers(user, [] {
            takeName("ble-kovra");
            ASSERT_EQ(::unshare(CLONE_NEWUSER), 0);
        });
        ASSERT_EQ(processStatus(otherUsers.number())->realUser, user);
        EXPECT_FALSE(applicationOf(user, otherUsers.number()));

        int numbers[2];
        ASSERT_EQ(::pipe(numbers), 0);
        const WaitingProcess parent(0, [&] {
            ASSERT_EQ(::unshare(CLONE_NEWPID), 0);
            const pid_t otherProcesses = ::fork();
            if (otherProcesses == 0) {
                takeName("ble-kovra");
                ASSERT_EQ(::setresuid(user, user, user), 0);
                ASSERT_EQ(::write(numbers[1], "xxxx", 4), 4);
                while (true) ::pause();
            }
            ASSERT_EQ(::write(numbers[1], &otherProcesses, sizeof otherProcesses), 4);
        });
        pid_t number = 0;
        char ready[8] = {};
        ASSERT_EQ(::read(numbers[0], ready, 4), 4);
        ASSERT_EQ(::read(numbers[0], ready + 4, 4), 4);
        // The two processes may write in either order.
        std::memcpy(&number, std::string(ready, 4) == "xxxx" ? ready + 4 : ready, sizeof number);
        ASSERT_EQ(processStatus(number)->realUser, user);
        EXPECT_FALSE(applicationOf(user, number));
        ::kill(number, SIGKILL);
    });
}

}  // namespace
}  // namespace kovra::helper
