#pragma once

#include <gtest/gtest.h>

#include <string>

#include "BLE_kovra/platform/MainQueue.h"
#include "BLE_kovra/platform/ProcessRunner.h"

namespace kovra {

// The contract of ProcessRunner. A Driver provides `processes()`, and `queue()`, the queue that runs while a program
// runs. `terminate()` simulates the end of the application.
//
// The Driver also provides three programs: `printing(text)` prints the text and ends; `working()` ends by itself after
// the queue has run; `missing()` does not exist. `hasRun(program)` returns whether a started program ran, and waits for
// that if necessary.
template <typename Driver>
class ProcessRunnerContract : public testing::Test {
  protected:
    Driver driver_;
};

TYPED_TEST_SUITE_P(ProcessRunnerContract);

TYPED_TEST_P(ProcessRunnerContract, ReturnsWhatAProgramWrote) {
    for (const std::string text : {"some text\n", "no line feed", "\n\n", ""}) {
        EXPECT_EQ(this->driver_.processes().output(this->driver_.printing(text)), text);
    }
}

TYPED_TEST_P(ProcessRunnerContract, ReturnsNullForAProgramThatIsMissing) {
    EXPECT_EQ(this->driver_.processes().output(this->driver_.missing()), std::nullopt);
}

TYPED_TEST_P(ProcessRunnerContract, RunsTheQueueWhileAProgramRuns) {
    bool hasGoneOn = false;
    this->driver_.queue().async([&] { hasGoneOn = true; });
    EXPECT_TRUE(this->driver_.processes().output(this->driver_.working()));
    EXPECT_TRUE(hasGoneOn);
}

TYPED_TEST_P(ProcessRunnerContract, RunsAProgramWhileItRunsAnother) {
    std::optional<std::string> inside;
    this->driver_.queue().async([&] { inside = this->driver_.processes().output(this->driver_.printing("inside")); });
    EXPECT_TRUE(this->driver_.processes().output(this->driver_.working()));
    EXPECT_EQ(inside, "inside");
}

TYPED_TEST_P(ProcessRunnerContract, StartsAProgram) {
    const Command program = this->driver_.printing("some text");
    const Outcome outcome = this->driver_.processes().start(program);
    EXPECT_TRUE(outcome) << outcome.reason();
    EXPECT_TRUE(this->driver_.hasRun(program));
}

TYPED_TEST_P(ProcessRunnerContract, ReturnsTheReasonIfItCannotStartAProgram) {
    const Outcome outcome = this->driver_.processes().start(this->driver_.missing());
    EXPECT_FALSE(outcome);
    EXPECT_NE(outcome.reason(), "");
}

TYPED_TEST_P(ProcessRunnerContract, ReturnsNullWhenTheApplicationTerminatesFirst) {
    this->driver_.queue().async([this] { this->driver_.terminate(); });
    EXPECT_EQ(this->driver_.processes().output(this->driver_.working()), std::nullopt);
}

TYPED_TEST_P(ProcessRunnerContract, StartsNothingAfterTheApplicationHasTerminated) {
    this->driver_.terminate();
    const Command program = this->driver_.printing("some text");
    EXPECT_EQ(this->driver_.processes().output(program), std::nullopt);
    EXPECT_FALSE(this->driver_.processes().start(program));
    EXPECT_FALSE(this->driver_.hasRun(program));
}

REGISTER_TYPED_TEST_SUITE_P(ProcessRunnerContract, ReturnsWhatAProgramWrote, ReturnsNullForAProgramThatIsMissing,
                            RunsTheQueueWhileAProgramRuns, RunsAProgramWhileItRunsAnother, StartsAProgram,
                            ReturnsTheReasonIfItCannotStartAProgram, ReturnsNullWhenTheApplicationTerminatesFirst,
                            StartsNothingAfterTheApplicationHasTerminated);

}  // namespace kovra
