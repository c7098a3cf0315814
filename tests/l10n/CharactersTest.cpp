#include "BLE_kovra/l10n/Characters.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <ios>
#include <random>
#include <string>
#include <string_view>

#include "tests/l10n/MarksOfUnicode.h"
#include "tests/support/Seeds.h"

namespace kovra {
namespace {

// For code points from U+0080 that are not surrogates.
std::string utf8(char32_t codePoint) {
    std::string text;
    const auto next = [&](unsigned lead, unsigned shift) { text += static_cast<char>(lead | (codePoint >> shift)); };
    const auto rest = [&](unsigned shift) { text += static_cast<char>(0x80 | ((codePoint >> shift) & 0x3F)); };
    if (codePoint < 0x800) next(0xC0, 6);
    if (codePoint >= 0x800 && codePoint < 0x10000) next(0xE0, 12);
    if (codePoint >= 0x10000) next(0xF0, 18);
    if (codePoint >= 0x10000) rest(12);
    if (codePoint >= 0x800) rest(6);
    rest(0);
    return text;
}

TEST(CharactersTest, KeepsAShorterTextWhole) {
    EXPECT_EQ(firstCharacters("", 2), "");
    EXPECT_EQ(firstCharacters("e", 2), "e");
    EXPECT_EQ(firstCharacters("en", 2), "en");
    EXPECT_EQ(firstCharacters("u\u0301", 2), "u\u0301");
}

TEST(CharactersTest, CutsAfterTheCount) {
    EXPECT_EQ(firstCharacters("en-GB", 2), "en");
    EXPECT_EQ(firstCharacters("en-GB", 0), "");
    EXPECT_EQ(firstCharacters("en-GB", 3), "en-");
}

TEST(CharactersTest, CountsCharactersNotBytes) {
    EXPECT_EQ(firstCharacters("\u0440\u0443\u0441", 2), "\u0440\u0443");
    EXPECT_EQ(firstCharacters("\u4E2D\u6587\u5B57", 2), "\u4E2D\u6587");
    EXPECT_EQ(firstCharacters("\U0001F600\U0001F601\U0001F602", 2), "\U0001F600\U0001F601");
    EXPECT_EQ(firstCharacters(std::string_view("\0\0\0", 3), 2), std::string_view("\0\0", 2));
}

TEST(CharactersTest, CountsALetterAndItsMarksAsOne) {
    EXPECT_EQ(firstCharacters("r\u0301u\u0302\u0323x", 2), "r\u0301u\u0302\u0323");
    EXPECT_EQ(firstCharacters("e\u0301\u0301\u0301n-GB", 2), "e\u0301\u0301\u0301n");
    EXPECT_EQ(firstCharacters("\u0915\u093F\u0916\u0940\u0917", 2), "\u0915\u093F\u0916\u0940");
}

TEST(CharactersTest, CountsAMarkAtTheBeginningAsACharacterOfItsOwn) {
    EXPECT_EQ(firstCharacters("\u0301ru", 2), "\u0301r");
    EXPECT_EQ(firstCharacters("\u0301\u0301ru", 2), "\u0301\u0301r");
}

// The test covers each kind of code point that does not start a character: marks of every category and length in UTF-8,
// joiners, variation selectors, skin tones and tags. U+0E33 (Thai), U+0EB3 (Lao) and U+FF9E (katakana) are letters by
// category.
TEST(CharactersTest, JoinsEveryKindOfMarkToItsLetter) {
    for (const std::string_view mark :
         {"\u0300",     "\u036F",     "\u0489",     "\u05B0",     "\u064B",     "\u0903",     "\u093E",    "\u094D",
          "\u0E33",     "\u0E34",     "\u0EB3",     "\u103B",     "\u1AB0",     "\u1DFF",     "\u200C",    "\u200D",
          "\u20DD",     "\u302A",     "\u3099",     "\uFE00",     "\uFE0F",     "\uFE20",     "\uFF9E",    "\U000101FD",
          "\U0001D165", "\U0001F3FB", "\U0001F3FF", "\U000E0020", "\U000E007F", "\U000E0100", "\U000E01EF"}) {
        EXPECT_EQ(firstCharacters("a" + std::string(mark) + "bc", 2), "a" + std::string(mark) + "b") << mark;
    }
}

// The test covers code points adjacent to those of JoinsEveryKindOfMarkToItsLetter, and marks that are characters of
// their own.
TEST(CharactersTest, SeparatesCodePointsThatStartACharacter) {
    for (const std::string_view other :
         {"\u02FF", "\u0370", "\u0482", "\u048A",     "\u0E32",     "\u0E35\u0E40", "\u102B",    "\u102C",
          "\u1038", "\u1083", "\u1A61", "\uAA7B",     "\u200B",     "\u200E",       "\u2010",    "\u3098",
          "\uFE10", "\uFF9D", "\uFFFD", "\U0001F3FA", "\U0001F400", "\U000E0001",   "\U000E01F0"}) {
        const bool marked = other.starts_with("\u0E35");
        const std::string first = marked ? "a\u0E35" : "a";
        const std::string second(marked ? other.substr(3) : other);
        EXPECT_EQ(firstCharacters(first + second + "b", 2), first + second) << other;
    }
}

TEST(CharactersTest, KnowsEachGroupOfMarksFromItsFirstToItsLast) {
    for (const char32_t mark : edgesOfMarks) {
        const std::string text = "a" + utf8(mark);
        EXPECT_EQ(firstCharacters(text, 1), text) << std::hex << static_cast<std::uint32_t>(mark);
    }
    const auto startsACharacter = [](char32_t other) {
        EXPECT_EQ(firstCharacters("a" + utf8(other), 1), "a") << std::hex << static_cast<std::uint32_t>(other);
    };
    std::ranges::for_each(besideMarks, startsACharacter);
    std::ranges::for_each(unassignedBesideMarks, startsACharacter);
}

TEST(CharactersTest, CountsEachPieceThatIsNotUtf8AsOneCharacter) {
    EXPECT_EQ(firstCharacters("\xFF\xFE\xFD", 2), "\xFF\xFE");
    EXPECT_EQ(firstCharacters("\xF0\x9F\x98r\x80u", 2), "\xF0\x9F\x98r");
    EXPECT_EQ(firstCharacters("ru\xCC", 2), "ru");
    EXPECT_EQ(firstCharacters("r\xFF\u0301u", 2), "r\xFF\u0301");
}

TEST(CharactersTest, LowersTheLettersAToZAndTheKelvinSign) {
    EXPECT_EQ(lowerCase("ABCXYZabcxyz"), "abcxyzabcxyz");
    EXPECT_EQ(lowerCase("@[`{0-_"), "@[`{0-_");
    EXPECT_EQ(lowerCase("U\u212A\u212A-UA"), "ukk-ua");
    EXPECT_EQ(lowerCase(""), "");
}

TEST(CharactersTest, LeavesEveryOtherByteAsItIs) {
    EXPECT_EQ(lowerCase("\u0420\u0423"), "\u0420\u0423");
    EXPECT_EQ(lowerCase("\xFF\xC1\xE2\x84"), "\xFF\xC1\xE2\x84");
    EXPECT_EQ(lowerCase("\xE2\x84\xAB"), "\xE2\x84\xAB");
}

TEST(CharactersTest, CutsAnyBytesIdempotently) {
    for (const std::uint32_t seed : fixedAndFreshSeeds(5)) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        const auto upTo = [&](unsigned highest) { return std::uniform_int_distribution<unsigned>(0, highest)(random); };
        for (int round = 0; round < 4000; ++round) {
            std::string text;
            for (unsigned left = upTo(24); left > 0; --left) {
                // Half of the bytes come from a set that makes whole or truncated combining marks likely.
                constexpr std::string_view likely = "u\xCC\x81\xE2\x80\x8D";
                text += upTo(1) == 0 ? static_cast<char>(upTo(255)) : likely[upTo(likely.size() - 1)];
            }
            SCOPED_TRACE(testing::PrintToString(text));
            const unsigned count = upTo(4);
            const std::string cut = firstCharacters(text, count);
            EXPECT_TRUE(text.starts_with(cut));
            EXPECT_GE(cut.size(), std::min<std::size_t>(count, text.size()) > 0 ? 1U : 0U);
            EXPECT_EQ(firstCharacters(cut, count), cut);
            EXPECT_TRUE(firstCharacters(text, count + 1).starts_with(cut));
        }
    }
}

}  // namespace
}  // namespace kovra
