#include "helper/Backoff.h"

#include <gtest/gtest.h>

#include <chrono>
#include <vector>

namespace kovra::helper {
namespace {

using namespace std::chrono_literals;

TEST(BackoffTest, DoublesFromFiftyMillisecondsToFiveSeconds) {
    Backoff backoff;
    std::vector<std::chrono::milliseconds> seen;
    for (int i = 0; i < 9; ++i) seen.push_back(backoff.nextDelay());
    EXPECT_EQ(seen, (std::vector<std::chrono::milliseconds>{50ms, 100ms, 200ms, 400ms, 800ms, 1600ms, 3200ms, 5s, 5s}));
    backoff.reset();
    EXPECT_EQ(backoff.nextDelay(), 50ms);
}

}  // namespace
}  // namespace kovra::helper
