#include "helper/session/ApplicationWatch.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <string>

#include "helper/session/ProcessStatus.h"
#include "tests/helper/AsRoot.h"
#include "tests/helper/PrivateMachine.h"
#include "tests/helper/ProcessName.h"
#include "tests/helper/Users.h"
#include "tests/helper/session/ApplicationWatchRig.h"
#include "tests/helper/session/WaitingProcess.h"

namespace kovra::helper {
namespace {

TEST(ApplicationWatchTest, ReportsTheEndOfTheApplicationHoweverItEnds) {
    inPrivateMachine([](uid_t user) {
        for (const int signal : {SIGKILL, SIGTERM, SIGABRT}) {
            ApplicationWatchRig rig;
            EXPECT_FALSE(rig.watch.startOf(user));
            const WaitingProcess application(user, named("ble-kovra"));
            EXPECT_TRUE(rig.watch.startOf(user));
            EXPECT_TRUE(rig.watch.startOf(user));
            EXPECT_TRUE(rig.gotNothing());
            application.signal(signal);
            EXPECT_TRUE(rig.gotChange());
            EXPECT_FALSE(rig.watch.startOf(user));  // a zombie counts as ended
            EXPECT_TRUE(rig.gotNothing());
        }
    });
}

TEST(ApplicationWatchTest, WatchesAnotherApplicationOfTheUserNext) {
    inPrivateMachine([](uid_t user) {
        ApplicationWatchRig rig;
        const WaitingProcess one(user, named("ble-kovra"));
        const WaitingProcess other(user, named("ble-kovra"));
        EXPECT_TRUE(rig.watch.startOf(user));
        one.kill();
        EXPECT_TRUE(rig.gotChange());
        EXPECT_TRUE(rig.watch.startOf(user));
        EXPECT_TRUE(rig.gotNothing());
        other.kill();
        EXPECT_TRUE(rig.gotChange());
        EXPECT_FALSE(rig.watch.startOf(user));
    });
}

TEST(ApplicationWatchTest, WatchesTheApplicationThatWasStartedFirst) {
    inPrivateMachine([](uid_t user) {
        numberNext(500);
        const WaitingProcess first(user, named("ble-kovra"));
        ::usleep(20'000);  // the kernel counts the time of a start in steps of 10 ms
        numberNext(400);   // so that /proc lists the next process first
        const WaitingProcess second(user, named("ble-kovra"));
        ApplicationWatchRig rig;
        EXPECT_NE(processStart(first.number()), processStart(second.number()));
        EXPECT_EQ(rig.watch.startOf(user), processStart(first.number()));
        second.kill();
        EXPECT_TRUE(rig.gotNothing());
        EXPECT_EQ(rig.watch.startOf(user), processStart(first.number()));
    });
}

TEST(ApplicationWatchTest, IgnoresProcessesWithOtherNames) {
    inPrivateMachine([](uid_t user) {
        ApplicationWatchRig rig;
        for (const std::string name : {"ble-kovra-ui", "ble-kovra-helper", "ble-kovr", "xble-kovra", "BLE-kovra", ""}) {
            const WaitingProcess process(user, named(name));
            EXPECT_FALSE(rig.watch.startOf(user)) << name;
        }
    });
}

TEST(ApplicationWatchTest, IgnoresApplicationsOfOtherUsers) {
    inPrivateMachine([](uid_t user) {
        ApplicationWatchRig rig;
        const WaitingProcess application(user, named("ble-kovra"));
        EXPECT_FALSE(rig.watch.startOf(bob));
        EXPECT_TRUE(rig.watch.startOf(user));
        EXPECT_FALSE(rig.watch.startOf(bob));
        EXPECT_FALSE(rig.watch.startOf(user + 1));
        application.kill();
        EXPECT_TRUE(rig.gotNothing());
    });
}

TEST(ApplicationWatchTest, IgnoresProcessesThatActForAnotherUser) {
    runAsRoot([] {
        inPrivateMachine([](uid_t) {
            ApplicationWatchRig rig;
            const WaitingProcess actsForRoot(bob, 0, named("ble-kovra"));
            const WaitingProcess rootActs(0, bob, named("ble-kovra"));
            EXPECT_FALSE(rig.watch.startOf(bob));
            EXPECT_FALSE(rig.watch.startOf(0));
        });
    });
}

TEST(ApplicationWatchTest, CountsAStoppedProcessAsRunningAndAZombieAsEnded) {
    inPrivateMachine([](uid_t user) {
        ApplicationWatchRig rig;
        const WaitingProcess application(user, named("ble-kovra"));
        application.signal(SIGSTOP);
        EXPECT_TRUE(rig.watch.startOf(user));
        EXPECT_TRUE(rig.gotNothing());
        application.kill();
        EXPECT_FALSE(rig.watch.startOf(user));
        EXPECT_TRUE(rig.gotNothing());
    });
}

TEST(ApplicationWatchTest, DoesNotReportTheEndAfterARelease) {
    inPrivateMachine([](uid_t user) {
        ApplicationWatchRig rig;
        const WaitingProcess application(user, named("ble-kovra"));
        EXPECT_TRUE(rig.watch.startOf(user));
        rig.watch.release();
        application.kill();
        EXPECT_TRUE(rig.gotNothing());
        EXPECT_FALSE(rig.watch.startOf(user));
    });
}

TEST(ApplicationWatchTest, ReleasesAProcessThatHasBecomeAnotherProgram) {
    inPrivateMachine([](uid_t user) {
        takeName("ble-kovra");
        ApplicationWatchRig rig;
        EXPECT_TRUE(rig.watch.startOf(0));
        takeName("another");
        EXPECT_FALSE(rig.watch.startOf(0));
        const WaitingProcess application(user, named("ble-kovra"));
        EXPECT_TRUE(rig.watch.startOf(user));
    });
}

}  // namespace
}  // namespace kovra::helper
