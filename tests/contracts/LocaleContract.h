#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "BLE_kovra/platform/Locale.h"

namespace kovra {

// The contract of Locale. A Driver provides `locale()` for a user who prefers British English, then Russian.
template <typename Driver>
class LocaleContract : public testing::Test {
  protected:
    std::string key(std::string_view name) { return driver_.locale().sortKey(name); }
    bool isAscending(std::string_view first, std::string_view second) {
        return driver_.locale().isAscending(key(first), key(second));
    }

    Driver driver_;
};

TYPED_TEST_SUITE_P(LocaleContract);

TYPED_TEST_P(LocaleContract, ReturnsTheLanguagesInOrderOfPreference) {
    EXPECT_EQ(this->driver_.locale().preferredLanguages(), (std::vector<std::string>{"en-GB", "ru-RU"}));
}

TYPED_TEST_P(LocaleContract, SortsNamesByTheirLetters) {
    EXPECT_TRUE(this->isAscending("apple", "banana"));
    EXPECT_FALSE(this->isAscending("banana", "apple"));
    EXPECT_TRUE(this->isAscending("Apple", "banana"));
    EXPECT_TRUE(this->isAscending("apple", "Banana"));
    EXPECT_TRUE(this->isAscending("Mouse", "Mouse 2"));
    EXPECT_TRUE(this->isAscending("Zebra", "Яблоко"));
    EXPECT_TRUE(this->isAscending("", "a"));
}

TYPED_TEST_P(LocaleContract, IgnoresCase) {
    for (const char* other : {"usb MOUSE", "USB mouse", "Usb Mouse"}) {
        EXPECT_FALSE(this->isAscending("USB Mouse", other));
        EXPECT_FALSE(this->isAscending(other, "USB Mouse"));
    }
}

TYPED_TEST_P(LocaleContract, SortsNoNameBeforeItself) {
    for (const std::string_view name : {"", "a", "Мышь", "\xFF", " "}) EXPECT_FALSE(this->isAscending(name, name));
}

TYPED_TEST_P(LocaleContract, SortsAnyBytes) {
    using std::string_view_literals::operator""sv;
    const std::vector<std::string_view> names{
        ""sv,     "\0"sv, "a\0b"sv, "\xFF"sv, "\xC3"sv, "\xED\xA0\x80"sv, "\xF4\x90\x80\x80"sv, "\xF4\x8F\xBF\xBF"sv,
        "\x01"sv, "😀"sv, "a"sv,    "B"sv,    "c\xFF"sv};
    for (const auto& first : names) {
        for (const auto& second : names) {
            EXPECT_FALSE(this->isAscending(first, second) && this->isAscending(second, first));
            for (const auto& third : names) {
                if (this->isAscending(first, second) && this->isAscending(second, third)) {
                    EXPECT_TRUE(this->isAscending(first, third));
                }
            }
        }
    }
}

TYPED_TEST_P(LocaleContract, SortsVeryLongNames) {
    const std::string longName(100000, 'a');
    EXPECT_TRUE(this->isAscending(longName, longName + "a"));
    EXPECT_TRUE(this->isAscending(longName, "b"));
}

REGISTER_TYPED_TEST_SUITE_P(LocaleContract, ReturnsTheLanguagesInOrderOfPreference, SortsNamesByTheirLetters,
                            IgnoresCase, SortsNoNameBeforeItself, SortsAnyBytes, SortsVeryLongNames);

}  // namespace kovra
