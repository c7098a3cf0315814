#include "BLE_kovra/l10n/L10n.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <ostream>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/Seeds.h"

namespace kovra {
namespace {

using Lang = L10n::Lang;
using Languages = std::vector<std::string>;

Lang chosen(const Languages& preferred) { return L10n(preferred).current(); }

struct Choice {
    const char* name;
    Languages preferred;
    Lang expected;
};
void PrintTo(const Choice& choice, std::ostream* out) { *out << testing::PrintToString(choice.preferred); }

class L10nChoiceTest : public testing::TestWithParam<Choice> {};

TEST_P(L10nChoiceTest, ChoosesTheLanguageByTheFirstEntry) {
    EXPECT_EQ(chosen(GetParam().preferred), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(, L10nChoiceTest,
                         testing::ValuesIn(std::vector<Choice>{
                             {"English", {"en"}, Lang::en},
                             {"Russian", {"ru"}, Lang::ru},
                             {"Ukrainian", {"uk"}, Lang::uk},
                             {"French", {"fr"}, Lang::fr},
                             {"German", {"de"}, Lang::de},
                             {"Spanish", {"es"}, Lang::es},

                             {"IgnoresTheRegionOfBritishEnglish", {"en-GB"}, Lang::en},
                             {"IgnoresTheRegionOfAmericanEnglish", {"en-US"}, Lang::en},
                             {"IgnoresTheRegionOfRussian", {"ru-RU"}, Lang::ru},
                             {"IgnoresTheRegionOfUkrainian", {"uk-UA"}, Lang::uk},
                             {"IgnoresTheRegionOfGerman", {"de-AT"}, Lang::de},
                             {"IgnoresARegionInDigits", {"es-419"}, Lang::es},
                             {"IgnoresScriptAndVariant", {"de-Latn-1901"}, Lang::de},

                             {"EnglishForPortuguese", {"pt-BR"}, Lang::en},
                             {"EnglishForChinese", {"zh-Hans-CN"}, Lang::en},
                             {"EnglishForJapanese", {"ja"}, Lang::en},
                             {"EnglishForTheLetterE", {"e"}, Lang::en},
                             {"EnglishForTheLetterR", {"r"}, Lang::en},
                             {"EnglishForAnEmptyList", {}, Lang::en},
                             {"EnglishForAnEmptyEntry", {""}, Lang::en},

                             {"IgnoresTheSecondEntryAfterAnUnknownLanguage", {"pt-BR", "ru-RU"}, Lang::en},
                             {"IgnoresTheSecondEntryAfterAnEmptyOne", {"", "ru-RU"}, Lang::en},
                             {"IgnoresTheSecondEntryAfterAKnownLanguage", {"de-AT", "ru-RU"}, Lang::de},

                             // Every code of three letters is cut to two, even if it names another language.
                             {"CutsAnUnknownCodeToUkrainian", {"ukx"}, Lang::uk},
                             {"CutsEstonianToSpanish", {"est"}, Lang::es},
                             {"CutsFilipinoToNoKnownLanguage", {"fil"}, Lang::en},

                             {"IgnoresCaseInRU", {"RU"}, Lang::ru},
                             {"IgnoresCaseInUk", {"Uk-ua"}, Lang::uk},
                             {"IgnoresCaseInFR", {"FR-ca"}, Lang::fr},
                             {"IgnoresCaseInES", {"eS_419"}, Lang::es},

                             {"LowersTheKelvinSignToK", {"U\u212A-UA"}, Lang::uk},
                             {"CountsTheKelvinSignAsOneCharacter", {"\u212AU"}, Lang::en},

                             // A letter with its combining marks is one character, which differs from the letter alone.
                             {"CountsAMarkWithItsLetter", {"ru\u0301-RU"}, Lang::en},
                             {"CountsAMarkWithTheFirstLetter", {"r\u0301u"}, Lang::en},
                             {"CountsTwoMarksWithTheirLetter", {"ru\u0301\u0323"}, Lang::en},
                             {"CountsALeadingMarkAsACharacter", {"\u0301ru"}, Lang::en},
                             {"CountsAJoinerWithItsLetter", {"ru\u200D"}, Lang::en},
                             {"CountsAVariationSelectorWithItsLetter", {"ru\uFE0F"}, Lang::en},

                             {"IgnoresAnAccentedThirdLetter", {"ru\u00E9"}, Lang::ru},
                             {"IgnoresAMarkOnTheThirdLetter", {"rue\u0301"}, Lang::ru},
                             {"IgnoresACyrillicThirdLetter", {"ru\u0440"}, Lang::ru},
                             {"IgnoresAnEmojiAfterTheCode", {"ru\U0001F600"}, Lang::ru},
                             {"IgnoresAZeroByteAndAMarkAfterTheCode", {std::string("ru\0\u0301", 5)}, Lang::ru},

                             {"RejectsACyrillicLetter", {"\u0433u"}, Lang::en},
                             {"RejectsFullwidthLetters", {"\uFF52\uFF55"}, Lang::en},
                             {"RejectsADotlessI", {"\u0131n"}, Lang::en},
                             {"RejectsALongS", {"e\u017F"}, Lang::en},  // the long s is lower case already
                             {"RejectsALeadingSpace", {" ru"}, Lang::en},
                             {"RejectsAHyphenInTheCode", {"r-u"}, Lang::en},

                             {"IgnoresAnInvalidByteAfterTheCode", {"ru\xFF"}, Lang::ru},
                             {"IgnoresHalfAMarkAfterTheCode", {"ru\xCC"}, Lang::ru},
                             {"RejectsAnInvalidByteInTheCode", {"r\xFFu"}, Lang::en},
                             {"RejectsAnInvalidByteBeforeTheCode", {"\xFFru"}, Lang::en},
                             {"RejectsInvalidBytesAlone", {"\xF2\xF5"}, Lang::en},
                             {"RejectsPartOfAKelvinSign", {"U\xE2\x84"}, Lang::en},
                         }),
                         [](const auto& row) { return row.param.name; });

TEST(L10nTest, HasRussianTextsForRussian) { EXPECT_EQ(L10n({"ru-RU"}).s("menu.quit"), "Завершить"); }

// Returns the expected language for an entry without combining marks and Kelvin signs.
Lang chosenAmongPlainBytes(std::string_view preferred) {
    std::string code(preferred.substr(0, 2));
    for (char& c : code) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c;
    return L10n::langFromRawValue(code).value_or(Lang::en);
}

TEST(L10nTest, AcceptsAnyBytesAsALanguage) {
    for (const std::uint32_t seed : fixedAndFreshSeeds(5)) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        const auto upTo = [&](unsigned highest) { return std::uniform_int_distribution<unsigned>(0, highest)(random); };
        constexpr std::array<std::string_view, 12> pieces{"r",      "u",    "uk",       "EN",   "-",    "\u0301",
                                                          "\u212A", "\xCC", "\xF0\x9F", "\xED", "\x80", "\uFE0F"};
        for (int round = 0; round < 4000; ++round) {
            std::string preferred;
            for (unsigned left = upTo(8); left > 0; --left) {
                if (upTo(2) == 0)
                    preferred += static_cast<char>(upTo(255));
                else
                    preferred += pieces[upTo(pieces.size() - 1)];
            }
            const Lang lang = chosen({preferred});
            const std::string beginning = preferred.substr(0, 3);
            const bool plain = std::ranges::all_of(beginning, [](char c) { return static_cast<signed char>(c) >= 0; });
            if (plain) {
                EXPECT_EQ(lang, chosenAmongPlainBytes(preferred)) << testing::PrintToString(preferred);
            }
            EXPECT_EQ(L10n({preferred}).s("about.ok"), "OK");
        }
    }
}

TEST(L10nTest, ReadsRawValuesExactlyAndCaseSensitively) {
    for (const Lang lang : L10n::allLanguages) EXPECT_EQ(L10n::langFromRawValue(L10n::rawValue(lang)), lang);
    EXPECT_EQ(L10n::langFromRawValue("ru"), Lang::ru);
    EXPECT_EQ(L10n::langFromRawValue("es"), Lang::es);
    for (const std::string_view other : {"", "e", "EN", "En", "en ", " en", "eng", "en-GB", "pt", "u\u212A"}) {
        EXPECT_EQ(L10n::langFromRawValue(other), std::nullopt) << other;
    }
    EXPECT_EQ(L10n::langFromRawValue(std::string_view("en\0", 3)), std::nullopt);
}

TEST(L10nTest, ListsTheLanguagesInOrderWithTheirCodes) {
    std::vector<std::string_view> codes;
    for (const Lang lang : L10n::allLanguages) codes.push_back(L10n::rawValue(lang));
    EXPECT_EQ(codes, (std::vector<std::string_view>{"en", "ru", "uk", "fr", "de", "es"}));
    EXPECT_EQ(static_cast<int>(Lang::en), 0);
    EXPECT_EQ(static_cast<int>(Lang::es), 5);
}

TEST(L10nTest, HashesEqualLanguagesEqually) {
    for (const Lang lang : L10n::allLanguages) {
        EXPECT_EQ(std::hash<Lang>{}(lang), std::hash<Lang>{}(*L10n::langFromRawValue(L10n::rawValue(lang))));
    }
}

TEST(L10nTest, LooksUpQuitInGermanAndInEnglish) {
    EXPECT_EQ(L10n({"de"}).s("menu.quit"), "Beenden");
    EXPECT_EQ(L10n({"en"}).s("menu.quit"), "Quit");
}

TEST(L10nTest, ReturnsAnUnknownKeyUnchangedInEveryLanguage) {
    for (const Lang lang : L10n::allLanguages) {
        const L10n l10n({std::string(L10n::rawValue(lang))});
        for (const std::string_view key : {"menu.none", "", "Menu.quit", "menu.quit ", "menu", "\xFF"}) {
            EXPECT_EQ(l10n.s(key), key);
        }
    }
}

TEST(L10nTest, FallsBackToEnglishWhereTheChosenLanguageIsMissing) {
    const L10n::Catalogue catalogue{{"menu.quit", {{Lang::en, "Quit"}, {Lang::fr, "Quitter"}}}};
    EXPECT_EQ(L10n({"fr"}, catalogue).s("menu.quit"), "Quitter");
    EXPECT_EQ(L10n({"de"}, catalogue).s("menu.quit"), "Quit");
    EXPECT_EQ(L10n({"en"}, catalogue).s("menu.quit"), "Quit");
}

TEST(L10nTest, FallsBackToTheKeyWhereEnglishIsMissingToo) {
    const L10n::Catalogue catalogue{{"menu.quit", {{Lang::fr, "Quitter"}}}};
    EXPECT_EQ(L10n({"fr"}, catalogue).s("menu.quit"), "Quitter");
    EXPECT_EQ(L10n({"de"}, catalogue).s("menu.quit"), "menu.quit");
    EXPECT_EQ(L10n({"en"}, catalogue).s("menu.quit"), "menu.quit");
}

TEST(L10nTest, ReturnsTheKeyFromAnEmptyTableAndFromAnEmptyCatalogue) {
    const L10n::Catalogue emptyTable{{"menu.quit", {}}};
    const L10n::Catalogue empty;
    EXPECT_EQ(L10n({"de"}, emptyTable).s("menu.quit"), "menu.quit");
    EXPECT_EQ(L10n({"de"}, empty).s("menu.quit"), "menu.quit");
}

TEST(L10nTest, ReturnsATextWithPercentAndBracesUnchanged) {
    const L10n::Catalogue catalogue{{"menu.quit", {{Lang::en, "100 % {0} %s & <b>"}}}};
    EXPECT_EQ(L10n({"en"}, catalogue).s("menu.quit"), "100 % {0} %s & <b>");
}

}  // namespace
}  // namespace kovra
