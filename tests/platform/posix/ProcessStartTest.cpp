#include "BLE_kovra/platform/posix/ProcessStart.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>

#include "tests/support/posix/InAChild.h"

namespace kovra {
namespace {

bool isIgnored(int number) {
    struct sigaction action{};
    return ::sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

TEST(ProcessStartTest, DetectsThatSIGHUPWasIgnoredAtTheStart) {
    EXPECT_TRUE(holdsInAChild([] {
        std::signal(SIGHUP, SIG_IGN);
        return startedIgnoringHangUp();
    }));
    EXPECT_TRUE(holdsInAChild([] {
        std::signal(SIGHUP, SIG_DFL);
        return !startedIgnoringHangUp();
    }));
}

TEST(ProcessStartTest, KeepsSIGHUPAsItWas) {
    for (const bool isIgnoredBefore : {true, false}) {
        EXPECT_TRUE(holdsInAChild([&] {
            std::signal(SIGHUP, isIgnoredBefore ? SIG_IGN : SIG_DFL);
            prepareProcess();
            return startedIgnoringHangUp() == isIgnoredBefore;
        }));
    }
}

TEST(ProcessStartTest, IgnoresSignalsThatWouldEndOrStopTheProcess) {
    for (const int number : {SIGPIPE, SIGXFSZ, SIGTTOU}) {
        EXPECT_TRUE(holdsInAChild([&] {
            std::signal(number, SIG_DFL);
            prepareProcess();
            return isIgnored(number);
        })) << number;
    }
}

TEST(ProcessStartTest, RestoresAnIgnoredSIGCHLD) {
    EXPECT_TRUE(holdsInAChild([] {
        std::signal(SIGCHLD, SIG_IGN);
        prepareProcess();
        return !isIgnored(SIGCHLD);
    }));
}

TEST(ProcessStartTest, OpensEachClosedStandardDescriptor) {
    for (const int closed : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        EXPECT_TRUE(holdsInAChild([&] {
            ::close(closed);
            prepareProcess();
            return ::fcntl(closed, F_GETFD) >= 0;
        })) << closed;
    }
}

TEST(ProcessStartTest, OpensNoOtherDescriptor) {
    EXPECT_TRUE(holdsInAChild([] {
        const int before = ::dup(STDERR_FILENO);
        ::close(before);
        prepareProcess();
        const int after = ::dup(STDERR_FILENO);
        return after == before;
    }));
}

}  // namespace
}  // namespace kovra
