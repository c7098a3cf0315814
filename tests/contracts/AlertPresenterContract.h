#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "BLE_kovra/platform/Alert.h"
#include "BLE_kovra/platform/MainQueue.h"

namespace kovra {

// The contract of AlertPresenter. A Driver provides `alerts()`, and `queue()`, the queue that runs while an alert is
// open. `shown()` returns the titles of all alerts opened so far. `terminate()` simulates the end of the application.
//
// `meanwhile(title, block)` makes the queue run the block once the alert with this title is open and topmost.
// `willAnswer(title, button)` makes the user answer that alert while it is topmost. `button` counts from 0; without a
// button the user closes the alert.
template <typename Driver>
class AlertPresenterContract : public testing::Test {
  protected:
    using Texts = std::vector<std::string>;

    AlertResponse run(const std::string& title) {
        const AlertResponse response = driver_.alerts().runModal({title, "A text", {"OK", "Other"}});
        returned_.push_back(title);
        return response;
    }

    Driver driver_;
    Texts returned_;
};

TYPED_TEST_SUITE_P(AlertPresenterContract);

TYPED_TEST_P(AlertPresenterContract, ReturnsTheButtonThatEndedIt) {
    this->driver_.willAnswer("A", 0);
    EXPECT_EQ(this->run("A"), AlertResponse::firstButton);
    this->driver_.willAnswer("B", 1);
    EXPECT_EQ(this->run("B"), AlertResponse::secondButton);
    this->driver_.willAnswer("C", std::nullopt);
    EXPECT_EQ(this->run("C"), AlertResponse::aborted);
    EXPECT_EQ(this->driver_.shown(), (std::vector<std::string>{"A", "B", "C"}));
}

TYPED_TEST_P(AlertPresenterContract, RunsTheQueueWhileAnAlertIsOpen) {
    bool hasGoneOn = false;
    this->driver_.meanwhile("A", [&] { this->driver_.queue().async([&] { hasGoneOn = true; }); });
    this->driver_.willAnswer("A", 0);
    this->run("A");
    EXPECT_TRUE(hasGoneOn);
}

TYPED_TEST_P(AlertPresenterContract, StacksANestedAlertAbove) {
    std::optional<AlertResponse> above;
    this->driver_.meanwhile("A", [&] { above = this->run("B"); });
    this->driver_.willAnswer("A", 0);
    this->driver_.willAnswer("B", 1);
    EXPECT_EQ(this->run("A"), AlertResponse::firstButton);
    EXPECT_EQ(above, AlertResponse::secondButton);
    EXPECT_EQ(this->driver_.shown(), (std::vector<std::string>{"A", "B"}));
    EXPECT_EQ(this->returned_, (std::vector<std::string>{"B", "A"}));
}

TYPED_TEST_P(AlertPresenterContract, OpensNoAlertThatIsOpenAlready) {
    std::vector<AlertResponse> more;
    this->driver_.meanwhile("A", [&] {
        for (int time = 0; time < 3; ++time) more.push_back(this->run("A"));
    });
    this->driver_.willAnswer("A", 0);
    EXPECT_EQ(this->run("A"), AlertResponse::firstButton);
    EXPECT_EQ(more, std::vector(3, AlertResponse::aborted));
    EXPECT_EQ(this->driver_.shown(), std::vector<std::string>{"A"});
    EXPECT_EQ(this->run("A"), AlertResponse::firstButton);
    EXPECT_EQ(this->driver_.shown(), (std::vector<std::string>{"A", "A"}));
}

TYPED_TEST_P(AlertPresenterContract, AbortsOpenAlertsWhenTheApplicationTerminates) {
    std::optional<AlertResponse> above;
    this->driver_.meanwhile("A", [&] { above = this->run("B"); });
    this->driver_.meanwhile("B", [&] { this->driver_.terminate(); });
    this->driver_.willAnswer("A", 0);
    this->driver_.willAnswer("B", 0);
    EXPECT_EQ(this->run("A"), AlertResponse::aborted);
    EXPECT_EQ(above, AlertResponse::aborted);
    EXPECT_EQ(this->returned_, (std::vector<std::string>{"B", "A"}));
}

TYPED_TEST_P(AlertPresenterContract, OpensNoAlertAfterTheApplicationHasTerminated) {
    this->driver_.terminate();
    this->driver_.willAnswer("A", 0);
    EXPECT_EQ(this->run("A"), AlertResponse::aborted);
    EXPECT_EQ(this->driver_.shown(), std::vector<std::string>{});
}

REGISTER_TYPED_TEST_SUITE_P(AlertPresenterContract, ReturnsTheButtonThatEndedIt, RunsTheQueueWhileAnAlertIsOpen,
                            StacksANestedAlertAbove, OpensNoAlertThatIsOpenAlready,
                            AbortsOpenAlertsWhenTheApplicationTerminates, OpensNoAlertAfterTheApplicationHasTerminated);

}  // namespace kovra
