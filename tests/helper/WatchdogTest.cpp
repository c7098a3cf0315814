#include "helper/Watchdog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

namespace kovra::helper {
namespace {

using namespace std::chrono_literals;

class WatchdogTest : public testing::Test {
  protected:
    void runFor(std::chrono::milliseconds time) {
        const auto over = loop.after(time, [this] { loop.stop(); });
        loop.run();
    }
    long signs() const { return std::count(states.begin(), states.end(), "WATCHDOG=1"); }

    Loop loop;
    Notifier::Result result = Notifier::Result::sent;
    std::vector<std::string> states;
    Watchdog watchdog{loop,
                      [this](const std::string& state) {
                          states.push_back(state);
                          if (signs() == 3) loop.stop();
                          return result;
                      },
                      {.timeout = 6s, .interval = 10ms}};
};

TEST_F(WatchdogTest, IsOnWhileATouchpadIsMutedAndGivesSignsOfLife) {
    watchdog.setMuted(true);
    EXPECT_EQ(states, std::vector<std::string>{"WATCHDOG_USEC=6000000"});
    runFor(10s);
    EXPECT_EQ(signs(), 3);
    states.clear();
    watchdog.setMuted(false);
    runFor(50ms);
    EXPECT_EQ(states, std::vector<std::string>{"WATCHDOG_USEC=0"});
}

TEST_F(WatchdogTest, GivesSignsWellBeforeTheTimeIsOver) {
    const Watchdog::Timing timing;
    EXPECT_LE(2 * timing.interval, timing.timeout);
    EXPECT_LE(timing.timeout, 8s);  // so that a hang leaves a pad muted for at most ten seconds
}

TEST_F(WatchdogTest, IsTurnedOnAndOffAgainAndAgainUntilTheQueueHasRoom) {
    for (const bool isMuted : {true, false}) {
        const std::string state = isMuted ? "WATCHDOG_USEC=6000000" : "WATCHDOG_USEC=0";
        states.clear();
        result = Notifier::Result::full;
        watchdog.setMuted(isMuted);
        runFor(100ms);
        EXPECT_GE(std::count(states.begin(), states.end(), state), 2);
        EXPECT_EQ(signs(), 0);
        states.clear();
        result = Notifier::Result::sent;
        runFor(100ms);
        EXPECT_EQ(std::count(states.begin(), states.end(), state), 1);
        EXPECT_EQ(signs() > 0, isMuted);
    }
}

TEST_F(WatchdogTest, GivesTheNextSignIfTheQueueHadNoRoomForOne) {
    watchdog.setMuted(true);
    result = Notifier::Result::full;
    runFor(10s);
    EXPECT_EQ(signs(), 3);
}

TEST_F(WatchdogTest, DoesNotWakeUpWithoutAServiceManager) {
    result = Notifier::Result::failed;
    watchdog.setMuted(true);
    runFor(50ms);
    EXPECT_EQ(signs(), 0);
}

}  // namespace
}  // namespace kovra::helper
