#include "BLE_kovra/platform/linux/start/LaunchFeedback.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "tests/fakes/FakeMainQueue.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;
using Texts = std::vector<std::string>;

class LaunchFeedbackTest : public testing::Test {
  protected:
    FakeMainQueue queue;
    Texts ended;
    LaunchFeedback feedback{queue, [this](const std::string& id) { ended.push_back(id); }};
};

TEST_F(LaunchFeedbackTest, EndsOnceWhenItIsTold) {
    feedback.begin("one");
    EXPECT_TRUE(feedback.isShown());
    feedback.end();
    EXPECT_EQ(ended, Texts{"one"});
    EXPECT_FALSE(feedback.isShown());
    EXPECT_EQ(queue.pendingDelayed(), 0U);
    feedback.end();
    queue.advance(1h);
    EXPECT_EQ(ended, Texts{"one"});
}

TEST_F(LaunchFeedbackTest, EndsAfterFiveSecondsAtTheLatest) {
    feedback.begin("one");
    queue.advance(5s - 1ms);
    EXPECT_EQ(ended, Texts{});
    queue.advance(1ms);
    EXPECT_EQ(ended, Texts{"one"});
    EXPECT_EQ(queue.pendingDelayed(), 0U);
}

TEST_F(LaunchFeedbackTest, EndsTogetherForSeveralStarts) {
    feedback.begin("one");
    queue.advance(4s);
    feedback.begin("two");
    queue.advance(1s);
    EXPECT_EQ(ended, (Texts{"one", "two"}));
    feedback.begin("three");
    queue.advance(5s);
    EXPECT_EQ(ended, (Texts{"one", "two", "three"}));
}

TEST_F(LaunchFeedbackTest, IsNotShownForAStartWithoutAnID) {
    feedback.begin("");
    EXPECT_FALSE(feedback.isShown());
    EXPECT_EQ(queue.pendingDelayed(), 0U);
}

TEST_F(LaunchFeedbackTest, KeepsFewIDs) {
    for (int start = 1; start <= 1000; ++start) feedback.begin(std::to_string(start));
    feedback.end();
    EXPECT_EQ(ended.size(), LaunchFeedback::most);
    EXPECT_EQ(ended.front(), "1");
}

}  // namespace
}  // namespace kovra
