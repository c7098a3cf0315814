#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "BLE_kovra/platform/PreferencesStore.h"
#include "BLE_kovra/platform/Utf8.h"

namespace kovra {

// The contract of PreferencesStore. A Driver provides `store()`, which is empty at first. After `startAgain()`,
// `store()` returns the store that the program gets at its next start.
template <typename Driver>
class PreferencesStoreContract : public testing::Test {
  protected:
    PreferencesStore& store() { return driver_.store(); }
    void set(std::string_view key, const PreferenceValue& value) { store().set(key, value); }
    std::optional<PreferenceValue> object(std::string_view key) { return store().object(key); }
    bool readAsBoolean(const PreferenceValue& value) {
        set("key", value);
        return store().boolean("key");
    }

    Driver driver_;
};

TYPED_TEST_SUITE_P(PreferencesStoreContract);

TYPED_TEST_P(PreferencesStoreContract, StartsEmpty) {
    EXPECT_EQ(this->object("isEnabled"), std::nullopt);
    EXPECT_FALSE(this->store().boolean("isEnabled"));
}

TYPED_TEST_P(PreferencesStoreContract, KeepsEachTypeAcrossStarts) {
    const PreferenceArray array{std::string("a"), 5.0, true, PreferenceArray{std::string("b")}, OtherPreference()};
    this->set("true", true);
    this->set("false", false);
    this->set("zero", 0.0);
    this->set("one", 1.0);
    this->set("fraction", -0.1);
    this->set("large", 1e300);
    this->set("text", std::string("on"));
    this->set("empty", std::string());
    this->set("array", array);
    this->set("no elements", PreferenceArray());
    this->set("one element", PreferenceArray{std::string("on")});
    this->set("other", OtherPreference());
    for (int start = 0; start < 3; ++start) {
        EXPECT_EQ(this->object("true"), PreferenceValue(true));
        EXPECT_EQ(this->object("false"), PreferenceValue(false));
        EXPECT_EQ(this->object("zero"), PreferenceValue(0.0));
        EXPECT_EQ(this->object("one"), PreferenceValue(1.0));
        EXPECT_EQ(this->object("fraction"), PreferenceValue(-0.1));
        EXPECT_EQ(this->object("large"), PreferenceValue(1e300));
        EXPECT_EQ(this->object("text"), PreferenceValue(std::string("on")));
        EXPECT_EQ(this->object("empty"), PreferenceValue(std::string()));
        EXPECT_EQ(this->object("array"), PreferenceValue(array));
        EXPECT_EQ(this->object("no elements"), PreferenceValue(PreferenceArray()));
        EXPECT_EQ(this->object("one element"), PreferenceValue(PreferenceArray{std::string("on")}));
        EXPECT_EQ(this->object("other"), PreferenceValue(OtherPreference()));
        this->driver_.startAgain();
    }
}

TYPED_TEST_P(PreferencesStoreContract, KeepsTextsOfEveryCharacter) {
    for (const std::string text : {"Мышь «Тест»#1133:49271", "\"\\/\b\f\n\r\t\x01\x7F", "%s%n", "😀", "a\xCC\x88"}) {
        this->set(text, text);
        this->driver_.startAgain();
        EXPECT_EQ(this->object(text), PreferenceValue(text));
    }
}

TYPED_TEST_P(PreferencesStoreContract, ReplacesOnlyOneKey) {
    this->set("isEnabled", true);
    this->set("blockMode", std::string("always"));
    this->set("isEnabled", std::string("of another type"));
    this->driver_.startAgain();
    this->set("isEnabled", false);
    for (int start = 0; start < 2; ++start) {
        EXPECT_EQ(this->object("isEnabled"), PreferenceValue(false));
        EXPECT_EQ(this->object("blockMode"), PreferenceValue(std::string("always")));
        this->driver_.startAgain();
    }
}

TYPED_TEST_P(PreferencesStoreContract, DistinguishesKeysByEveryByte) {
    this->set("key", 1.0);
    this->set("Key", 2.0);
    this->set("ke", 3.0);
    this->set("", 4.0);
    this->driver_.startAgain();
    EXPECT_EQ(this->object("key"), PreferenceValue(1.0));
    EXPECT_EQ(this->object("Key"), PreferenceValue(2.0));
    EXPECT_EQ(this->object("ke"), PreferenceValue(3.0));
    EXPECT_EQ(this->object(""), PreferenceValue(4.0));
}

TYPED_TEST_P(PreferencesStoreContract, ReadsTruthValuesAndNumbersAsBooleans) {
    EXPECT_TRUE(this->readAsBoolean(true));
    EXPECT_FALSE(this->readAsBoolean(false));
    for (const double number : {1.0, -1.0, 0.5, 1e-300, 1e300}) EXPECT_TRUE(this->readAsBoolean(number)) << number;
    EXPECT_FALSE(this->readAsBoolean(0.0));
    EXPECT_FALSE(this->readAsBoolean(-0.0));
}

TYPED_TEST_P(PreferencesStoreContract, ReadsTextsAsBooleansByTheirBeginning) {
    for (const std::string text : {"Y", "y", "T", "t", "1", "9", "YES", "true", "tea", "10", "0001", "+1", "-1", "-0y",
                                   " yes", "\t\n 1", " +001", "+y"}) {
        EXPECT_TRUE(this->readAsBoolean(text)) << '"' << text << '"';
    }
    for (const std::string text : {"", "N", "no", "false", "0", "000", "on", "+", "-", "+-1", "--1", "+ 1", "0 1",
                                   "0.5", " ", "x1", "\xD0\xB4\xD0\xB0", "\xC2\xA0y", "\xFF"}) {
        EXPECT_FALSE(this->readAsBoolean(text)) << '"' << text << '"';
    }
}

TYPED_TEST_P(PreferencesStoreContract, ReadsNothingElseAsTrue) {
    EXPECT_FALSE(this->readAsBoolean(PreferenceArray{true}));
    EXPECT_FALSE(this->readAsBoolean(OtherPreference()));
}

TYPED_TEST_P(PreferencesStoreContract, AcceptsAnyBytes) {
    for (const std::string text : {"\xFF", "\xED\xA0\x80", "a\xC3", "\xF4\x90\x80\x80"}) {
        this->set(text, text);
        const auto kept = this->object(text);
        ASSERT_TRUE(kept && std::holds_alternative<std::string>(*kept));
        EXPECT_EQ(validUtf8(std::get<std::string>(*kept)), validUtf8(text));
    }
    this->set("zero", std::string(2, '\0'));
    this->driver_.startAgain();
    EXPECT_EQ(this->object("zero"), PreferenceValue(std::string(2, '\0')));
}

REGISTER_TYPED_TEST_SUITE_P(PreferencesStoreContract, StartsEmpty, KeepsEachTypeAcrossStarts,
                            KeepsTextsOfEveryCharacter, ReplacesOnlyOneKey, DistinguishesKeysByEveryByte,
                            ReadsTruthValuesAndNumbersAsBooleans, ReadsTextsAsBooleansByTheirBeginning,
                            ReadsNothingElseAsTrue, AcceptsAnyBytes);

}  // namespace kovra
