#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "BLE_kovra/platform/Application.h"
#include "BLE_kovra/platform/MainQueue.h"

namespace kovra {

// The contract of Application. A Driver provides `application()`, and `queue()`, the queue that the application runs.
// `runOut(delegate)` runs the application until it ends.
template <typename Driver>
class ApplicationContract : public testing::Test, protected ApplicationDelegate {
  protected:
    void applicationDidFinishLaunching() override {
        events_ += "launched ";
        if (whenLaunched_) whenLaunched_();
    }
    void applicationDidReopen() override { events_ += "reopened "; }
    void applicationDidResume() override { events_ += "resumed "; }
    void applicationShouldPerform(ApplicationAction) override { events_ += "performs "; }
    ApplicationFacts facts() const override { return {}; }
    void applicationWillTerminate() override {
        events_ += "terminates ";
        if (whenTerminating_) whenTerminating_();
    }

    Driver driver_;
    std::function<void()> whenLaunched_;
    std::function<void()> whenTerminating_;
    std::string events_;
};

TYPED_TEST_SUITE_P(ApplicationContract);

TYPED_TEST_P(ApplicationContract, NotifiesOfItsLaunchAndEnd) {
    this->whenLaunched_ = [this] { this->driver_.queue().async([this] { this->driver_.application().terminate(); }); };
    this->driver_.runOut(*this);
    EXPECT_EQ(this->events_, "launched terminates ");
}

TYPED_TEST_P(ApplicationContract, NotifiesOfItsEndInsideTerminate) {
    this->whenLaunched_ = [this] {
        this->driver_.queue().async([this] {
            this->driver_.application().terminate();
            this->events_ += "called ";
        });
    };
    this->driver_.runOut(*this);
    EXPECT_EQ(this->events_, "launched terminates called ");
}

TYPED_TEST_P(ApplicationContract, MayEndWhileItLaunches) {
    this->whenLaunched_ = [this] { this->driver_.application().terminate(); };
    this->driver_.runOut(*this);
    EXPECT_EQ(this->events_, "launched terminates ");
}

TYPED_TEST_P(ApplicationContract, EndsOnce) {
    this->whenLaunched_ = [this] {
        this->driver_.application().terminate();
        this->driver_.application().terminate();
    };
    this->whenTerminating_ = [this] { this->driver_.application().terminate(); };
    this->driver_.runOut(*this);
    EXPECT_EQ(this->events_, "launched terminates ");
}

TYPED_TEST_P(ApplicationContract, RunsNoQueuedBlockAfterItsEnd) {
    this->whenLaunched_ = [this] {
        this->driver_.queue().async([this] { this->driver_.application().terminate(); });
        this->driver_.queue().async([this] { this->events_ += "queued before "; });
    };
    this->whenTerminating_ = [this] { this->driver_.queue().async([this] { this->events_ += "queued at the end "; }); };
    this->driver_.runOut(*this);
    EXPECT_EQ(this->events_, "launched terminates ");
}

REGISTER_TYPED_TEST_SUITE_P(ApplicationContract, NotifiesOfItsLaunchAndEnd, NotifiesOfItsEndInsideTerminate,
                            MayEndWhileItLaunches, EndsOnce, RunsNoQueuedBlockAfterItsEnd);

}  // namespace kovra
