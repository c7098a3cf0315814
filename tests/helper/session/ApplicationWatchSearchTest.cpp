#include <gtest/gtest.h>

#include <chrono>

#include "tests/helper/BytesRead.h"
#include "tests/helper/PrivateMachine.h"
#include "tests/helper/session/ApplicationWatchRig.h"
#include "tests/helper/session/WaitingProcess.h"

// How often all processes are searched for the application.

namespace kovra::helper {
namespace {

using namespace std::chrono_literals;

// Returns the number of bytes that one call of startOf() reads.
long costOf(ApplicationWatchRig& rig, uid_t user) {
    const long before = bytesRead();
    rig.watch.startOf(user);
    return bytesRead() - before;
}

TEST(ApplicationWatchSearchTest, SearchesAllProcessesAtMostTwiceASecondAfterAFewTimes) {
    inPrivateMachine([](uid_t user) {
        ApplicationWatchRig rig;
        const WaitingProcess other(user, named("another"));
        const long withSearch = costOf(rig, user);
        const auto begin = std::chrono::steady_clock::now();
        int searches = 1;
        for (int i = 0; i < 300; ++i) searches += costOf(rig, user) > withSearch / 2 ? 1 : 0;
        const auto time = std::chrono::steady_clock::now() - begin;
        EXPECT_GE(searches, 5);
        EXPECT_LE(searches, 5 + time / 500ms + 1);
    });
}

TEST(ApplicationWatchSearchTest, ReportsAnApplicationThatStartsWhileSearchesArePutOff) {
    inPrivateMachine([](uid_t user) {
        ApplicationWatchRig rig;
        for (int i = 0; i < 20; ++i) EXPECT_FALSE(rig.watch.startOf(user));
        const WaitingProcess application(user, named("ble-kovra"));
        const auto started = std::chrono::steady_clock::now();
        if (!rig.watch.startOf(user)) {
            EXPECT_TRUE(rig.gotChange());
        }
        EXPECT_LT(std::chrono::steady_clock::now() - started, 1s);
        EXPECT_TRUE(rig.watch.startOf(user));
        // The application that was found late is watched like any other.
        application.kill();
        EXPECT_TRUE(rig.gotChange());
    });
}

TEST(ApplicationWatchSearchTest, ReportsTheEndOfTheApplicationWithoutASearch) {
    inPrivateMachine([](uid_t user) {
        ApplicationWatchRig rig;
        const long withSearch = costOf(rig, user);
        const WaitingProcess application(user, named("ble-kovra"));
        EXPECT_TRUE(rig.watch.startOf(user));
        application.kill();
        const long before = bytesRead();
        EXPECT_TRUE(rig.gotChange());
        EXPECT_EQ(rig.watch.heldStartOf(user), std::nullopt);
        EXPECT_LT(bytesRead() - before, withSearch / 2);
    });
}

TEST(ApplicationWatchSearchTest, ForgetsASearchThatWasPutOffAtARelease) {
    inPrivateMachine([](uid_t user) {
        ApplicationWatchRig rig;
        for (int i = 0; i < 20; ++i) EXPECT_FALSE(rig.watch.startOf(user));
        EXPECT_TRUE(rig.gotNothingFor(600ms)) << "a search that was put off has found nothing";
        EXPECT_FALSE(rig.watch.startOf(user) || rig.watch.startOf(user));
        rig.watch.release();
        const WaitingProcess application(user, named("ble-kovra"));
        EXPECT_TRUE(rig.gotNothingFor(600ms));
    });
}

}  // namespace
}  // namespace kovra::helper
