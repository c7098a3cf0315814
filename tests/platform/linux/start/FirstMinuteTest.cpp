#include "BLE_kovra/platform/linux/start/FirstMinute.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>

#include "tests/fakes/FakeMainQueue.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;

// The user has just started the program. The desktop replies about its tray only if the test lets it.
class FirstMinuteTest : public testing::Test {
  protected:
    enum class Tray { unanswered, missing, present };

    FirstMinuteTest() {
        queue.advance(1s);
        first = std::make_unique<FirstMinute>(queue,
                                              FirstMinute::Desk{.lookForTray =
                                                                    [this] {
                                                                        ++looks;
                                                                        if (tray == Tray::missing)
                                                                            first->trayIsMissing();
                                                                        if (tray == Tray::present)
                                                                            first->trayTakesIcon();
                                                                    },
                                                                .isNothingChosen = [this] { return isNothingChosen; },
                                                                .isAlertOpen = [this] { return isAlertOpen; },
                                                                .openSettings = [this] { ++openings; }});
    }

    FakeMainQueue queue;
    Tray tray = Tray::missing;
    bool isNothingChosen = false;
    bool isAlertOpen = false;
    int looks = 0;
    int openings = 0;
    std::unique_ptr<FirstMinute> first;
};

TEST_F(FirstMinuteTest, OpensTheSettingsAfterFiveSecondsWithoutATray) {
    first->launchEnded();
    first->trayIsMissing();
    queue.advance(5s - 1ms);
    EXPECT_EQ(openings, 0);
    queue.advance(1ms);
    EXPECT_EQ(openings, 1);
}

TEST_F(FirstMinuteTest, OpensTheSettingsAtOnceIfNothingIsChosenYet) {
    isNothingChosen = true;
    first->launchEnded();
    EXPECT_EQ(openings, 0);
    first->trayIsMissing();
    EXPECT_EQ(openings, 1);
    EXPECT_EQ(queue.pendingDelayed(), 0U);
}

TEST_F(FirstMinuteTest, OpensNothingOnceATrayHasTheIcon) {
    isNothingChosen = true;
    first->launchEnded();
    first->trayTakesIcon();
    EXPECT_EQ(queue.pendingDelayed(), 0U);
    first->trayIsMissing();
    queue.advance(1h);
    EXPECT_EQ(openings, 0);
    EXPECT_EQ(looks, 0);
}

TEST_F(FirstMinuteTest, OpensNothingIfATrayAppearsWithinFiveSeconds) {
    first->launchEnded();
    first->trayIsMissing();
    queue.advance(4s);
    first->trayTakesIcon();
    queue.advance(1h);
    EXPECT_EQ(openings, 0);
}

TEST_F(FirstMinuteTest, LooksForATrayOnceMoreWhenTheTimeIsUp) {
    first->launchEnded();
    first->trayIsMissing();
    tray = Tray::present;
    queue.advance(5s);
    EXPECT_EQ(looks, 1);
    EXPECT_EQ(openings, 0);
    EXPECT_TRUE(first->isDecided());
}

TEST_F(FirstMinuteTest, OpensTheSettingsOnlyOnce) {
    isNothingChosen = true;
    first->launchEnded();
    first->trayIsMissing();
    first->trayIsMissing();
    first->launchEnded();
    queue.advance(1h);
    first->trayIsMissing();
    EXPECT_EQ(openings, 1);
}

TEST_F(FirstMinuteTest, WaitsForTheAnswerToTheAlertOfTheLaunch) {
    isNothingChosen = true;
    first->trayIsMissing();
    queue.advance(1min);
    EXPECT_EQ(openings, 0);
    EXPECT_EQ(queue.pendingDelayed(), 0U);
    first->launchEnded();
    EXPECT_EQ(openings, 1);
}

TEST_F(FirstMinuteTest, OpensTheSettingsAsSoonAsTheLaunchHasEndedIfNothingIsChosenYet) {
    isNothingChosen = true;
    first->trayIsMissing();
    queue.advance(1s);
    EXPECT_EQ(openings, 0);
    first->launchEnded();
    EXPECT_EQ(openings, 1);
}

TEST_F(FirstMinuteTest, LooksForATrayAgainAfterALongLaunch) {
    first->trayIsMissing();
    queue.advance(1min);
    tray = Tray::present;
    first->launchEnded();
    EXPECT_EQ(openings, 0);
}

TEST_F(FirstMinuteTest, OpensNothingOverAnAlert) {
    first->launchEnded();
    isAlertOpen = true;
    queue.advance(5s);
    EXPECT_EQ(openings, 0);
    isAlertOpen = false;
    queue.advance(1h);
    EXPECT_EQ(openings, 0);
}

TEST_F(FirstMinuteTest, OpensNothingIfTheSettingsWereOpenedMeanwhile) {
    first->launchEnded();
    queue.advance(4s);
    first->settingsOpened();
    queue.advance(1h);
    EXPECT_EQ(openings, 0);
}

TEST_F(FirstMinuteTest, WakesNobodyAfterFiveSeconds) {
    tray = Tray::unanswered;
    first->launchEnded();
    queue.advance(5s);
    EXPECT_EQ(looks, 1);
    EXPECT_EQ(queue.pendingDelayed(), 0U);
}

TEST_F(FirstMinuteTest, LeavesNoTimerBehind) {
    EXPECT_EQ(queue.pendingDelayed(), 1U);
    first.reset();
    EXPECT_EQ(queue.pendingDelayed(), 0U);
}

}  // namespace
}  // namespace kovra
