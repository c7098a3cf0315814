#include "BLE_kovra/platform/linux/session/ActivationToken.h"

#include <gtest/gtest.h>

#include <string>

namespace kovra {
namespace {

TEST(ActivationTokenTest, IsUsedForOneWindow) {
    ActivationToken token;
    token.provide("one");
    EXPECT_FALSE(token.isUsed("one"));
    EXPECT_EQ(token.take(), "one");
    EXPECT_TRUE(token.isUsed("one"));
    EXPECT_EQ(token.take(), "");
}

TEST(ActivationTokenTest, CountsAsUnusedIfAnotherHasReplacedIt) {
    ActivationToken token;
    token.provide("one");
    token.provide("two");
    EXPECT_EQ(token.take(), "two");
    EXPECT_FALSE(token.isUsed("one"));
}

TEST(ActivationTokenTest, CanBeForgottenUnlessAnotherHasReplacedIt) {
    ActivationToken token;
    token.provide("one");
    token.forget("one");
    EXPECT_EQ(token.take(), "");
    token.provide("two");
    token.forget("one");
    EXPECT_EQ(token.take(), "two");
}

TEST(ActivationTokenTest, IsNoLongerThanAnyDesktopIssues) {
    ActivationToken token;
    token.provide(std::string(1025, 'x'));
    EXPECT_EQ(token.take(), "");
}

}  // namespace
}  // namespace kovra
