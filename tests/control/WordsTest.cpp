#include "BLE_kovra/control/Words.h"

#include <gtest/gtest.h>

#include "tests/control/Cases.h"

namespace kovra::control {
namespace {

TEST(WordsTest, KeepPrintableTextAndReplaceControlCharacters) {
    EXPECT_EQ(printable("Maus „Übung“ 鼠"), "Maus „Übung“ 鼠");
    EXPECT_EQ(printable("a\tb\x7F\x1B]0;x\x07"), "a?b??]0;x?");
    EXPECT_EQ(printable("\xC2\x80\xC2\xA0"), "?\xC2\xA0");
    EXPECT_EQ(printable("\xC2"), "\xC2");
}

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
