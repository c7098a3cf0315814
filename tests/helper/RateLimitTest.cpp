#include "helper/RateLimit.h"

#include <gtest/gtest.h>

#include <chrono>

namespace kovra::helper {
namespace {

using namespace std::chrono_literals;

class RateLimitTest : public testing::Test {
  protected:
    int useAll() {
        int uses = 0;
        for (; limit.delay(now) == 0ms; ++uses) limit.use(now);
        return uses;
    }

    RateLimit::Clock::time_point now{1h};
    RateLimit limit{3, 50ms};
};

TEST_F(RateLimitTest, PermitsABurstAndThenOneUsePerInterval) {
    EXPECT_EQ(useAll(), 3);
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(limit.delay(now), 50ms);
        now += 49ms;
        EXPECT_EQ(useAll(), 0);
        EXPECT_EQ(limit.delay(now), 1ms);
        now += 1ms;
        EXPECT_EQ(useAll(), 1);
    }
}

TEST_F(RateLimitTest, SavesUnusedTimesUpToTheBurst) {
    EXPECT_EQ(useAll(), 3);
    now += 100ms;
    EXPECT_EQ(useAll(), 2);
    now += 10h;
    EXPECT_EQ(useAll(), 3);
    EXPECT_EQ(limit.delay(now), 50ms);
}

TEST_F(RateLimitTest, PermitsSlowUsesWithoutEnd) {
    for (int i = 0; i < 1'000; ++i, now += 50ms) {
        ASSERT_EQ(limit.delay(now), 0ms);
        limit.use(now);
    }
}

TEST_F(RateLimitTest, RoundsADelayUp) {
    EXPECT_EQ(useAll(), 3);
    now += 49ms + 1us;
    EXPECT_EQ(limit.delay(now), 1ms);
    now += 999us;
    EXPECT_EQ(limit.delay(now), 0ms);
}

}  // namespace
}  // namespace kovra::helper
