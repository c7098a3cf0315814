#include "helper/flag/WordCheck.h"

#include <gtest/gtest.h>

#include <chrono>

namespace kovra::helper {
namespace {

using namespace std::chrono_literals;
using std::chrono::nanoseconds;

// A computer on which an application was started 1,000.5 s after boot.
class WordCheckTest : public testing::Test {
  protected:
    // Whether a word that was written this long after the start of the application counts as the application's.
    bool counts(nanoseconds afterStart, ino_t inode = 7) {
        return check.isWrittenSince(start, {inode, boot + start + afterStart});
    }

    nanoseconds boot = 1'700'000'000s;
    BootTime start = 1000s + 500ms;
    WordCheck check{[this] { return boot; }};
};

TEST_F(WordCheckTest, CountsAWordThatWasWrittenAfterTheStart) {
    EXPECT_TRUE(counts(1ms));
    EXPECT_TRUE(counts(24h));
}

TEST_F(WordCheckTest, DoesNotCountAWordThatWasWrittenBeforeTheStart) {
    EXPECT_FALSE(counts(-11ms));
    EXPECT_FALSE(counts(-24h));
}

TEST_F(WordCheckTest, CountsAWordThatWasWrittenInTheTickOfTheStart) { EXPECT_TRUE(counts(-9ms)); }

TEST_F(WordCheckTest, CountsAWordOfTheSameSecondIfTheFileSystemKeepsWholeSeconds) {
    EXPECT_TRUE(counts(-500ms));
    EXPECT_FALSE(counts(-1500ms));
}

TEST_F(WordCheckTest, ChecksEachWordAndEachFileAndEachApplication) {
    EXPECT_FALSE(counts(-50ms));
    EXPECT_TRUE(counts(50ms));
    EXPECT_FALSE(counts(-50ms));
    start += 1h;
    EXPECT_FALSE(counts(-1h + 50ms));
    boot -= 24h;
    EXPECT_TRUE(check.isWrittenSince(start, {7, 1'700'000'000s}));
    EXPECT_FALSE(counts(-50ms, 8));
}

TEST_F(WordCheckTest, KeepsItsAnswerWhenTheClockIsSet) {
    const WordCheck::Version own{7, boot + start + 1s};
    EXPECT_TRUE(check.isWrittenSince(start, own));
    boot += 24h;
    EXPECT_TRUE(check.isWrittenSince(start, own));

    const WordCheck::Version left{7, boot + start - 1s};
    EXPECT_FALSE(check.isWrittenSince(start, left));
    boot -= 24h;
    EXPECT_FALSE(check.isWrittenSince(start, left));
}

TEST_F(WordCheckTest, CountsAWordThatWasWrittenAfterTheClockWasSet) {
    boot += 24h;
    EXPECT_TRUE(counts(1ms));
    boot -= 48h;
    EXPECT_TRUE(counts(2ms));
}

TEST_F(WordCheckTest, ReadsTheClocksOfTheMachine) {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    EXPECT_LT(realTimeAtBoot(), now);
    WordCheck real;
    EXPECT_TRUE(real.isWrittenSince(0s, {7, now}));
    EXPECT_FALSE(real.isWrittenSince(1'000'000h, {7, now}));
}

}  // namespace
}  // namespace kovra::helper
