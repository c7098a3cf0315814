#include "BLE_kovra/control/Words.h"

#include <gtest/gtest.h>

#include "tests/control/Cases.h"

namespace kovra::control {
namespace {

TEST(WordsTest, EnumerateWithAnd) {
    EXPECT_EQ(enumerated({}), "");
    EXPECT_EQ(enumerated({"a"}), "a");
    EXPECT_EQ(enumerated({"a", "b"}), "a and b");
    EXPECT_EQ(enumerated({"a", "b", "c"}), "a, b and c");
}

TEST(WordsTest, LeaveTheDecisionToWhoMayWriteTheFlag) {
    Facts facts = mutedByMouse();
    EXPECT_TRUE(isApplicationInCharge(facts));
    facts.flag.writer = boris;
    EXPECT_FALSE(isApplicationInCharge(facts));
    facts.flag.writer.reset();
    EXPECT_TRUE(isApplicationInCharge(facts));
    EXPECT_FALSE(isApplicationInCharge(silenced(facts, Application::Contact::silent)));
}

}  // namespace
}  // namespace kovra::control
