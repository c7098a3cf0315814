#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "BLE_kovra/platform/MainQueue.h"

namespace kovra {

// The contract of MainQueue. A Driver provides `queue()`. `settle()` runs the queue until nothing is due.
// `let(duration)` runs the queue for this long by the queue's own clock, and `now()` reads that clock. `terminate()`
// simulates the end of the application.
template <typename Driver>
class MainQueueContract : public testing::Test {
  protected:
    MainQueue::Block append(char letter) {
        return [this, letter] { order_ += letter; };
    }

    Driver driver_;
    MainQueue& queue_ = driver_.queue();
    std::string order_;
};

TYPED_TEST_SUITE_P(MainQueueContract);

TYPED_TEST_P(MainQueueContract, RunsNothingInsideTheCall) {
    this->queue_.async(this->append('a'));
    EXPECT_EQ(this->order_, "");
    this->driver_.settle();
    EXPECT_EQ(this->order_, "a");
}

TYPED_TEST_P(MainQueueContract, RunsFirstInFirstOut) {
    for (const char letter : {'a', 'b', 'c', 'd'}) this->queue_.async(this->append(letter));
    this->driver_.settle();
    EXPECT_EQ(this->order_, "abcd");
}

TYPED_TEST_P(MainQueueContract, RunsABlockThatABlockAddsAfterThoseBeforeIt) {
    this->queue_.async([this] {
        this->order_ += 'a';
        this->queue_.async(this->append('c'));
    });
    this->queue_.async(this->append('b'));
    this->driver_.settle();
    EXPECT_EQ(this->order_, "abc");
}

TYPED_TEST_P(MainQueueContract, RunsADelayedBlockNeverBeforeItsTime) {
    using std::chrono_literals::operator""ms;
    const auto asked = this->driver_.now();
    auto ran = asked;
    const auto task = this->queue_.asyncAfter(30ms, [&] {
        this->order_ += 'a';
        ran = this->driver_.now();
    });
    EXPECT_EQ(this->order_, "");
    this->driver_.let(50ms);
    EXPECT_EQ(this->order_, "a");
    EXPECT_GE(ran - asked, 30ms);
}

TYPED_TEST_P(MainQueueContract, RunsDelayedBlocksInTheOrderOfTheirTimes) {
    using std::chrono_literals::operator""ms;
    const auto late = this->queue_.asyncAfter(40ms, this->append('c'));
    const auto early = this->queue_.asyncAfter(10ms, this->append('a'));
    const auto between = this->queue_.asyncAfter(25ms, this->append('b'));
    this->driver_.let(60ms);
    EXPECT_EQ(this->order_, "abc");
}

TYPED_TEST_P(MainQueueContract, RunsADelayedBlockEvenIfItsTaskIsDestroyed) {
    using std::chrono_literals::operator""ms;
    this->queue_.asyncAfter(10ms, this->append('a')).reset();
    this->driver_.let(40ms);
    EXPECT_EQ(this->order_, "a");
}

TYPED_TEST_P(MainQueueContract, NeverRunsACancelledBlock) {
    using std::chrono_literals::operator""ms;
    const auto task = this->queue_.asyncAfter(10ms, this->append('a'));
    task->cancel();
    task->cancel();
    this->driver_.let(40ms);
    EXPECT_EQ(this->order_, "");
}

TYPED_TEST_P(MainQueueContract, CancelsABlockThatIsDueButHasNotStarted) {
    using std::chrono_literals::operator""ms;
    std::unique_ptr<DelayedTask> second;
    // Both blocks are due when the first one runs, which cancels the second.
    const auto first = this->queue_.asyncAfter(0ms, [&] {
        this->order_ += 'a';
        second->cancel();
    });
    second = this->queue_.asyncAfter(0ms, this->append('b'));
    this->driver_.let(20ms);
    EXPECT_EQ(this->order_, "a");
}

TYPED_TEST_P(MainQueueContract, IgnoresACancelAfterTheBlockHasRun) {
    using std::chrono_literals::operator""ms;
    std::unique_ptr<DelayedTask> task;
    task = this->queue_.asyncAfter(1ms, [&] {
        this->order_ += 'a';
        task->cancel();
    });
    this->driver_.let(20ms);
    task->cancel();
    EXPECT_EQ(this->order_, "a");
}

TYPED_TEST_P(MainQueueContract, TreatsANegativeDelayAsZero) {
    using std::chrono_literals::operator""ms;
    const auto task = this->queue_.asyncAfter(-5ms, this->append('a'));
    this->driver_.let(5ms);
    EXPECT_EQ(this->order_, "a");
}

TYPED_TEST_P(MainQueueContract, RunsNothingAfterTheEnd) {
    using std::chrono_literals::operator""ms;
    this->queue_.async([this] {
        this->order_ += 'a';
        this->driver_.terminate();
    });
    this->queue_.async(this->append('b'));
    const auto task = this->queue_.asyncAfter(1ms, this->append('c'));
    this->driver_.settle();
    this->queue_.async(this->append('d'));
    this->driver_.let(20ms);
    EXPECT_EQ(this->order_, "a");
    task->cancel();
}

REGISTER_TYPED_TEST_SUITE_P(MainQueueContract, RunsNothingInsideTheCall, RunsFirstInFirstOut,
                            RunsABlockThatABlockAddsAfterThoseBeforeIt, RunsADelayedBlockNeverBeforeItsTime,
                            RunsDelayedBlocksInTheOrderOfTheirTimes, RunsADelayedBlockEvenIfItsTaskIsDestroyed,
                            NeverRunsACancelledBlock, CancelsABlockThatIsDueButHasNotStarted,
                            IgnoresACancelAfterTheBlockHasRun, TreatsANegativeDelayAsZero, RunsNothingAfterTheEnd);

}  // namespace kovra
