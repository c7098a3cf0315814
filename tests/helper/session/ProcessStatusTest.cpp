#include "helper/session/ProcessStatus.h"

#include <grp.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <functional>
#include <numeric>
#include <string>
#include <vector>

#include "tests/helper/AsRoot.h"
#include "tests/helper/PrivateMachine.h"
#include "tests/helper/session/WaitingProcess.h"

namespace kovra::helper {
namespace {

TEST(ProcessStatusTest, IsParsedFromTheKernelsText) {
    const auto status = parseProcessStatus(
        "Name:\tble-kovra\nUmask:\t0022\nState:\tS (sleeping)\nTgid:\t77\nPid:\t77\nPPid:\t12\nTracerPid:\t0\n"
        "Uid:\t1000\t1001\t1002\t1003\nGid:\t5\t6\t7\t8\n");
    ASSERT_TRUE(status);
    EXPECT_EQ(status->name, "ble-kovra");
    EXPECT_EQ(status->parent, 12);
    EXPECT_EQ(status->realUser, 1000U);
    EXPECT_EQ(status->effectiveUser, 1001U);
    EXPECT_EQ(status->pidNamespaces, 1);
}

TEST(ProcessStatusTest, CountsTheNamespacesOfTheProcess) {
    const std::string text = "Name:\tble-kovra\nPPid:\t12\nUid:\t1\t1\t1\t1\nNSpid:\t77";
    EXPECT_EQ(parseProcessStatus(text + "\n")->pidNamespaces, 1);
    EXPECT_EQ(parseProcessStatus(text + "\t5\t1\n")->pidNamespaces, 3);
}

// Runs the check with the number of a process that is in a process namespace of its own, and in this many groups.
void withProcessOfAContainer(std::size_t groups, const std::function<void(pid_t)>& check) {
    runAsRoot([&] {
        inPrivateMachine([&](uid_t) {
            std::vector<gid_t> numbers(groups);
            std::iota(numbers.begin(), numbers.end(), gid_t{1});
            int ends[2];
            ASSERT_EQ(::pipe(ends), 0);
            const WaitingProcess parent(0, [&] {
                ASSERT_EQ(::setgroups(numbers.size(), numbers.data()), 0);
                ASSERT_EQ(::unshare(CLONE_NEWPID), 0);
                const pid_t process = ::fork();
                while (process == 0) ::pause();
                ASSERT_EQ(::write(ends[1], &process, sizeof process), static_cast<ssize_t>(sizeof process));
            });
            pid_t process = 0;
            ASSERT_EQ(::read(ends[0], &process, sizeof process), static_cast<ssize_t>(sizeof process));
            check(process);
            ::kill(process, SIGKILL);
        });
    });
}

TEST(ProcessStatusTest, CountsTheNamespacesOfAProcessInThousandsOfGroups) {
    withProcessOfAContainer(2'000, [](pid_t process) {
        const auto status = processStatus(process);
        ASSERT_TRUE(status);
        EXPECT_EQ(status->pidNamespaces, 2);
    });
}

TEST(ProcessStatusTest, IsEmptyIfItsTextIsTooLong) {
    withProcessOfAContainer(20'000, [](pid_t process) { EXPECT_FALSE(processStatus(process)); });
}

TEST(ProcessStatusTest, IsEmptyForADamagedText) {
    for (const std::string text :
         {"", "\n\n", "Name:\tble-kovra\n", "Name:\tx\nPPid:\t1\nUid:\n", "Uid:\t1\t1\nPPid:\t1\n",
          "Name:\tx\nPPid:\tone\nUid:\t1\t1\n", "Name:\tx\nPPid:\t1\nUid:\t1\n",
          "Name:\tx\nPPid:\t1\nUid:\t99999999999\t1\n", "Name"}) {
        EXPECT_FALSE(parseProcessStatus(text)) << text;
    }
}

std::string statWith(const std::string& name, const std::string& start) {
    return "77 (" + name + ") S 12 77 77 0 -1 4194560 1 2 3 4 5 6 7 8 20 0 1 0 " + start + " 9 10 11";
}

TEST(ProcessStatusTest, ReadsTheStartFromTheKernelsText) {
    const long tick = ::sysconf(_SC_CLK_TCK);
    EXPECT_EQ(parseProcessStart(statWith("ble-kovra", std::to_string(90 * tick))), std::chrono::seconds(90));
    EXPECT_EQ(parseProcessStart(statWith("x) R 1 2 (y", "1")), BootTime(std::chrono::seconds(1)) / tick);
}

// In nanoseconds, three years times a hundred ticks a second are more than 63 bits.
TEST(ProcessStatusTest, ReadsAStartAfterManyYearsWithoutAReboot) {
    const auto tick = ::sysconf(_SC_CLK_TCK);
    const auto years = std::chrono::seconds(std::int64_t{100} * 365 * 24 * 3600);
    EXPECT_EQ(parseProcessStart(statWith("ble-kovra", std::to_string(years.count() * tick + 1))),
              years + BootTime(std::chrono::seconds(1)) / tick);
}

TEST(ProcessStatusTest, ReadsNoStartThatIsTooFarAway) {
    EXPECT_FALSE(parseProcessStart(statWith("ble-kovra", "9223372036854775807")));
    EXPECT_FALSE(parseProcessStart(statWith("ble-kovra", "18446744073709551615")));
}

TEST(ProcessStatusTest, ReadsNoStartFromADamagedText) {
    for (const std::string& text : {std::string(), std::string("77 (ble-kovra"), std::string("77 (ble-kovra) S 12 77"),
                                    statWith("ble-kovra", "x"), statWith("ble-kovra", "-1")}) {
        EXPECT_FALSE(parseProcessStart(text)) << text;
    }
}

TEST(ProcessStatusTest, ReadsWhenAProcessWasStarted) {
    const auto sinceBoot = [] {
        timespec time{};
        ::clock_gettime(CLOCK_BOOTTIME, &time);
        return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
    };
    const auto before = sinceBoot();
    const pid_t process = ::fork();
    while (process == 0) ::pause();
    const auto start = processStart(process);
    ::kill(process, SIGKILL);
    ::waitpid(process, nullptr, 0);
    ASSERT_TRUE(start);
    EXPECT_GE(*start, before - std::chrono::milliseconds(10));
    EXPECT_LE(*start, sinceBoot());
    EXPECT_FALSE(processStart(process));
}

TEST(ProcessStatusTest, IsNotConfusedByANameThatLooksLikeFurtherLines) {
    ::prctl(PR_SET_NAME, "x\nUid:\t1\t1");
    const auto status = processStatus(::getpid());
    ::prctl(PR_SET_NAME, "test_helper");
    ASSERT_TRUE(status);
    EXPECT_EQ(status->name, "x\\nUid:\t1\t1");
    EXPECT_EQ(status->realUser, ::getuid());
}

}  // namespace
}  // namespace kovra::helper
