#include "BLE_kovra/control/Printable.h"

#include <gtest/gtest.h>

namespace kovra::control {
namespace {

TEST(PrintableTest, KeepsTextAndReplacesControlCharacters) {
    EXPECT_EQ(printable("Maus „Übung“ 鼠"), "Maus „Übung“ 鼠");
    EXPECT_EQ(printable("a\tb\x7F\x1B]0;x\x07"), "a?b??]0;x?");
    EXPECT_EQ(printable("\xC2\x80\xC2\xA0"), "?\xC2\xA0");
    EXPECT_EQ(printable("\xC2"), "\xC2");
}

// An argument need not be valid UTF-8.
TEST(PrintableTest, LosesNoCharacterAfterAByteThatBeginsAnotherOne) {
    EXPECT_EQ(printable("\xC2#B"), "\xC2#B");
    EXPECT_EQ(printable("\xC2\n"), "\xC2?");
}

}  // namespace
}  // namespace kovra::control
