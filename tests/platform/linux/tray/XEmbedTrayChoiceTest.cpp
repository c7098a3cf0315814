#include "BLE_kovra/platform/linux/tray/XEmbedTrayChoice.h"

#include <gtest/gtest.h>

#include <chrono>

#include "tests/fakes/FakeMainQueue.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;

class XEmbedTrayChoiceTest : public testing::Test {
  protected:
    FakeMainQueue queue;
    XEmbedTrayChoice choice{queue,
                            {.lookForTrays = [this](bool isWanted) { isLooking = isWanted; },
                             .showIcon =
                                 [this](bool isWanted) {
                                     isShown = isWanted;
                                     ++changes;
                                 }}};
    bool isLooking = false;
    bool isShown = false;
    int changes = 0;
};

TEST_F(XEmbedTrayChoiceTest, ShowsTheIconInTheOtherTrayIfNoHostAppears) {
    queue.advance(5s - 1ms);
    EXPECT_FALSE(isLooking);
    queue.advance(1ms);
    EXPECT_TRUE(isLooking);
    EXPECT_FALSE(isShown);
    choice.setTrayPresent(true);
    EXPECT_TRUE(isShown);
}

TEST_F(XEmbedTrayChoiceTest, NeverLooksForAnotherTrayWhileThereIsAHost) {
    choice.setHostPresent(true);
    EXPECT_EQ(queue.pendingDelayed(), 0U);
    queue.advance(1h);
    EXPECT_FALSE(isLooking);
}

TEST_F(XEmbedTrayChoiceTest, GivesAHostTimeToAppearAtLogin) {
    choice.setHostPresent(false);
    queue.advance(5s - 1ms);
    choice.setHostPresent(true);
    queue.advance(1h);
    EXPECT_FALSE(isLooking);
}

TEST_F(XEmbedTrayChoiceTest, LeavesTheTrayToAHostThatAppearsLater) {
    queue.advance(5s);
    choice.setTrayPresent(true);
    choice.setHostPresent(true);
    EXPECT_FALSE(isShown);
    EXPECT_FALSE(isLooking);
    queue.advance(1h);
    EXPECT_FALSE(isShown);
}

TEST_F(XEmbedTrayChoiceTest, GivesARestartedHostTimeToReturn) {
    choice.setHostPresent(true);
    choice.setHostPresent(false);
    queue.advance(5s - 1ms);
    choice.setHostPresent(true);
    queue.advance(1h);
    EXPECT_FALSE(isLooking);
    choice.setHostPresent(false);
    queue.advance(5s);
    EXPECT_TRUE(isLooking);
}

TEST_F(XEmbedTrayChoiceTest, ShowsAndHidesTheIconTogetherWithTheTray) {
    queue.advance(5s);
    for (int round = 0; round < 3; ++round) {
        choice.setTrayPresent(true);
        choice.setTrayPresent(true);
        EXPECT_TRUE(isShown);
        choice.setTrayPresent(false);
        EXPECT_FALSE(isShown);
    }
    EXPECT_EQ(changes, 6);
    EXPECT_TRUE(isLooking);
}

TEST_F(XEmbedTrayChoiceTest, RunsNoTimerOnceItHasDecided) {
    queue.advance(5s);
    EXPECT_EQ(queue.pendingDelayed(), 0U);
    choice.setTrayPresent(true);
    EXPECT_EQ(queue.pendingDelayed(), 0U);
}

}  // namespace
}  // namespace kovra
