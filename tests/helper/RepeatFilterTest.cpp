#include "helper/RepeatFilter.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

namespace kovra::helper {
namespace {

using namespace std::chrono_literals;

class RepeatFilterTest : public testing::Test {
  protected:
    bool accepts(const std::string& line) { return filter.accepts(line, now); }

    RateLimit::Clock::time_point now{1h};
    RepeatFilter filter;
};

TEST_F(RepeatFilterTest, RejectsALineThatEqualsTheLastOne) {
    EXPECT_TRUE(accepts("one"));
    EXPECT_FALSE(accepts("one"));
    now += 1000h;
    EXPECT_FALSE(accepts("one"));
    EXPECT_TRUE(accepts("two"));
    EXPECT_TRUE(accepts("one"));
}

TEST_F(RepeatFilterTest, AcceptsLinesThatAlternateThreeTimesAndThenOncePerHour) {
    int accepted = 0;
    const auto alternateForAnHour = [&] {
        accepted = 0;
        for (int i = 0; i < 12 * 60; ++i, now += 5s)
            for (const std::string line : {"pad", "twin", "kernel"}) accepted += accepts(line) ? 1 : 0;
        return accepted;
    };
    EXPECT_EQ(alternateForAnHour(), 3 * 3);
    for (int hour = 0; hour < 5; ++hour) EXPECT_EQ(alternateForAnHour(), 3);
}

TEST_F(RepeatFilterTest, AcceptsALineAgainThatWasRareForSomeHours) {
    for (int i = 0; i < 10; ++i) {
        accepts("pad");
        accepts("twin");
    }
    now += 3h;
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(accepts("pad"));
        EXPECT_TRUE(accepts("twin"));
    }
    EXPECT_FALSE(accepts("pad"));
}

TEST_F(RepeatFilterTest, RemembersSixteenLines) {
    const auto acceptsAll = [&](int lines) {
        int accepted = 0;
        for (int i = 0; i < lines; ++i) accepted += accepts(std::to_string(i)) ? 1 : 0;
        return accepted;
    };
    for (int round = 0; round < 3; ++round) EXPECT_EQ(acceptsAll(16), 16);
    EXPECT_EQ(acceptsAll(16), 0);
    for (int round = 0; round < 5; ++round) EXPECT_TRUE(accepts("new " + std::to_string(round)));
    EXPECT_EQ(acceptsAll(5), 5);
}

}  // namespace
}  // namespace kovra::helper
