#include "BLE_kovra/platform/Utf8.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/Seeds.h"

namespace kovra {
namespace {

constexpr std::string_view replacement = "\uFFFD";

bool isSurrogate(char32_t codePoint) { return codePoint >= 0xD800 && codePoint <= 0xDFFF; }

std::string encoded(char32_t codePoint) {
    const auto byte = [](char32_t value) { return static_cast<char>(static_cast<unsigned char>(value)); };
    if (codePoint < 0x80) return {byte(codePoint)};
    if (codePoint < 0x800) return {byte(0xC0 + codePoint / 64), byte(0x80 + codePoint % 64)};
    if (codePoint < 0x10000) {
        return {byte(0xE0 + codePoint / 4096), byte(0x80 + codePoint / 64 % 64), byte(0x80 + codePoint % 64)};
    }
    return {byte(0xF0 + codePoint / 262144), byte(0x80 + codePoint / 4096 % 64), byte(0x80 + codePoint / 64 % 64),
            byte(0x80 + codePoint % 64)};
}

// The beginnings of every encoded character: its first one, two and three bytes. From them the test derives how long a
// truncated or invalid sequence is, without repeating the rules of the decoder.
class Beginnings {
  public:
    Beginnings() {
        for (char32_t codePoint = 0; codePoint <= 0x10FFFF; ++codePoint) {
            if (isSurrogate(codePoint)) continue;
            const std::string bytes = encoded(codePoint);
            for (std::size_t length = 1; length <= bytes.size() && length <= 3; ++length) {
                known_[length - 1][index(bytes, length)] = true;
            }
        }
    }

    // Returns how many bytes at the start of the text are the beginning of an encoded character, up to three. Returns 1
    // if not even the first byte is.
    std::size_t longest(std::string_view text) const {
        std::size_t length = 1;
        while (length < 3 && length < text.size() && known_[length][index(text, length + 1)]) ++length;
        return length;
    }

  private:
    static std::size_t index(std::string_view bytes, std::size_t length) {
        std::size_t value = 0;
        for (const char c : bytes.substr(0, length)) value = value * 256 + static_cast<unsigned char>(c);
        return value;
    }

    std::array<std::vector<bool>, 3> known_{std::vector<bool>(256), std::vector<bool>(65536),
                                            std::vector<bool>(16777216)};
};

void expectInvalid(std::string_view text, std::size_t length) {
    const Utf8Character character = decodeUtf8(text);
    EXPECT_FALSE(character.valid) << testing::PrintToString(text);
    EXPECT_EQ(character.length, length) << testing::PrintToString(text);
    EXPECT_EQ(character.codePoint, char32_t{0xFFFD}) << testing::PrintToString(text);
}

TEST(Utf8Test, DecodesEveryCharacterThereIs) {
    for (char32_t codePoint = 0; codePoint <= 0x10FFFF; ++codePoint) {
        if (isSurrogate(codePoint)) continue;
        const std::string bytes = encoded(codePoint);
        const Utf8Character character = decodeUtf8(bytes + "\x80");
        ASSERT_TRUE(character.valid) << static_cast<std::uint32_t>(codePoint);
        ASSERT_EQ(character.codePoint, codePoint);
        ASSERT_EQ(character.length, bytes.size());
    }
}

TEST(Utf8Test, DistinguishesCharactersFromOtherBytes) {
    const Beginnings beginnings;
    constexpr std::string_view classes("\x00\x7F\x80\x8F\x90\x9F\xA0\xBF\xC0\xC2\xE0\xF4\xFF", 13);
    std::string text(4, '\0');
    for (int lead = 0; lead < 256; ++lead) {
        for (int second = 0; second < 256; ++second) {
            for (const char third : classes) {
                for (const char fourth : classes) {
                    text = {static_cast<char>(lead), static_cast<char>(second), third, fourth};
                    const Utf8Character character = decodeUtf8(text);
                    const std::string_view piece = std::string_view(text).substr(0, character.length);
                    if (character.valid) {
                        ASSERT_FALSE(isSurrogate(character.codePoint));
                        ASSERT_LE(character.codePoint, char32_t{0x10FFFF});
                        ASSERT_EQ(encoded(character.codePoint), piece);
                    } else {
                        ASSERT_EQ(character.codePoint, char32_t{0xFFFD});
                        ASSERT_EQ(character.length, beginnings.longest(text)) << testing::PrintToString(text);
                    }
                }
            }
        }
    }
}

TEST(Utf8Test, RejectsLoneContinuationsAndInvalidBytes) {
    for (const char lead : std::string_view("\x80\xA5\xBF\xC0\xC1\xF5\xF8\xFC\xFE\xFF")) {
        expectInvalid(std::string{lead, '\x80', '\x80', '\x80'}, 1);
    }
}

TEST(Utf8Test, RefusesOverlongForms) {
    expectInvalid("\xC0\x80", 1);
    expectInvalid("\xC1\xBF", 1);
    expectInvalid("\xE0\x80\x80", 1);
    expectInvalid("\xE0\x9F\xBF", 1);
    expectInvalid("\xF0\x80\x80\x80", 1);
    expectInvalid("\xF0\x8F\xBF\xBF", 1);
}

TEST(Utf8Test, RefusesSurrogates) {
    expectInvalid("\xED\xA0\x80", 1);
    expectInvalid("\xED\xAF\xBF", 1);
    expectInvalid("\xED\xB0\x80", 1);
    expectInvalid("\xED\xBF\xBF", 1);
    EXPECT_TRUE(decodeUtf8("\xED\x9F\xBF").valid);
    EXPECT_TRUE(decodeUtf8("\xEE\x80\x80").valid);
}

TEST(Utf8Test, RefusesNumbersPastTheLastCharacter) {
    EXPECT_EQ(decodeUtf8("\xF4\x8F\xBF\xBF").codePoint, char32_t{0x10FFFF});
    expectInvalid("\xF4\x90\x80\x80", 1);
    expectInvalid("\xF5\x80\x80\x80", 1);
    expectInvalid("\xF7\xBF\xBF\xBF", 1);
}

TEST(Utf8Test, TreatsATruncatedCharacterAsOnePiece) {
    for (const std::string_view whole : {"\u00E9", "\u0301", "\u20AC", "\uFFFF", "\U00010000", "\U0010FFFF"}) {
        for (std::size_t length = 1; length < whole.size(); ++length) {
            const std::string torn(whole.substr(0, length));
            expectInvalid(torn, length);
            expectInvalid(torn + "x", length);
            expectInvalid(torn + std::string(whole), length);
            EXPECT_EQ(validUtf8("a" + torn + "b"), "a" + std::string(replacement) + "b");
            EXPECT_EQ(validUtf8("a" + torn), "a" + std::string(replacement));
        }
    }
}

TEST(Utf8Test, KeepsValidTexts) {
    EXPECT_EQ(validUtf8(""), "");
    for (const std::string_view text : {std::string_view("plain"), std::string_view("a\0b", 3),
                                        std::string_view("Мышь № 1 \u0301\U0001F5B1\uFFFD")}) {
        EXPECT_EQ(validUtf8(text), text);
    }
}

TEST(Utf8Test, ReplacesEachInvalidPieceByOneCharacter) {
    const std::string one(replacement);
    EXPECT_EQ(validUtf8("\xFF"), one);
    EXPECT_EQ(validUtf8("\xFF\xFE"), one + one);
    EXPECT_EQ(validUtf8("\xC0\x80"), one + one);
    EXPECT_EQ(validUtf8("\xED\xA0\x80"), one + one + one);
    EXPECT_EQ(validUtf8("a\xF0\x9F\x98"
                        "b\x80"),
              "a" + one + "b" + one);
}

TEST(Utf8Test, MakesAnyBytesValidAndThenLeavesThemAlone) {
    const Beginnings beginnings;
    for (const std::uint32_t seed : fixedAndFreshSeeds(5)) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        const auto upTo = [&](unsigned highest) { return std::uniform_int_distribution<unsigned>(0, highest)(random); };
        for (int round = 0; round < 4000; ++round) {
            std::string bytes;
            for (unsigned left = upTo(40); left > 0; --left)
                bytes += static_cast<char>(upTo(3) == 0 ? upTo(127) : upTo(255));
            SCOPED_TRACE(testing::PrintToString(bytes));
            const std::string valid = validUtf8(bytes);
            EXPECT_EQ(validUtf8(valid), valid);
            for (std::string_view rest = valid; !rest.empty(); rest.remove_prefix(decodeUtf8(rest).length)) {
                ASSERT_TRUE(decodeUtf8(rest).valid);
            }
        }
    }
}

}  // namespace
}  // namespace kovra
