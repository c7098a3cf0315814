#pragma once

#include <gtest/gtest.h>

#include "BLE_kovra/platform/LoginService.h"

namespace kovra {

// The contract of LoginService. A Driver provides `service()`, with which nothing is registered yet. After `obstruct()`
// every registration and unregistration fails.
template <typename Driver>
class LoginServiceContract : public testing::Test {
  protected:
    LoginService& service() { return driver_.service(); }

    Driver driver_;
};

TYPED_TEST_SUITE_P(LoginServiceContract);

TYPED_TEST_P(LoginServiceContract, StartsUnregistered) {
    EXPECT_EQ(this->service().status(), LoginStatus::notRegistered);
}

TYPED_TEST_P(LoginServiceContract, IsEnabledOnceRegistered) {
    EXPECT_TRUE(this->service().registerApplication());
    EXPECT_EQ(this->service().status(), LoginStatus::enabled);
    EXPECT_TRUE(this->service().registerApplication());
    EXPECT_EQ(this->service().status(), LoginStatus::enabled);
}

TYPED_TEST_P(LoginServiceContract, IsNotRegisteredOnceUnregistered) {
    for (int round = 0; round < 2; ++round) {
        EXPECT_TRUE(this->service().registerApplication());
        EXPECT_TRUE(this->service().unregisterApplication());
        EXPECT_EQ(this->service().status(), LoginStatus::notRegistered);
    }
    EXPECT_TRUE(this->service().unregisterApplication());
    EXPECT_EQ(this->service().status(), LoginStatus::notRegistered);
}

TYPED_TEST_P(LoginServiceContract, ReturnsTheReasonOfAFailedRegistration) {
    this->driver_.obstruct();
    const Outcome outcome = this->service().registerApplication();
    EXPECT_FALSE(outcome);
    EXPECT_NE(outcome.reason(), "");
    EXPECT_EQ(this->service().status(), LoginStatus::notRegistered);
}

TYPED_TEST_P(LoginServiceContract, ReturnsTheReasonOfAFailedUnregistration) {
    EXPECT_TRUE(this->service().registerApplication());
    this->driver_.obstruct();
    const Outcome outcome = this->service().unregisterApplication();
    EXPECT_FALSE(outcome);
    EXPECT_NE(outcome.reason(), "");
    EXPECT_EQ(this->service().status(), LoginStatus::enabled);
}

REGISTER_TYPED_TEST_SUITE_P(LoginServiceContract, StartsUnregistered, IsEnabledOnceRegistered,
                            IsNotRegisteredOnceUnregistered, ReturnsTheReasonOfAFailedRegistration,
                            ReturnsTheReasonOfAFailedUnregistration);

}  // namespace kovra
