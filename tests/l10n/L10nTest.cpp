#include "BLE_kovra/l10n/L10n.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
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
Lang chosen(std::string_view preferred) { return chosen(Languages{std::string(preferred)}); }

TEST(L10nTest, ChoosesEachLanguageByItsCode) {
    EXPECT_EQ(chosen("en"), Lang::en);
    EXPECT_EQ(chosen("ru"), Lang::ru);
    EXPECT_EQ(chosen("uk"), Lang::uk);
    EXPECT_EQ(chosen("fr"), Lang::fr);
    EXPECT_EQ(chosen("de"), Lang::de);
    EXPECT_EQ(chosen("es"), Lang::es);
}

TEST(L10nTest, GivesRussianTextsForRuRU) {
    EXPECT_EQ(chosen("ru-RU"), Lang::ru);
    EXPECT_EQ(L10n({"ru-RU"}).text("menu.quit"), "Завершить");
}

TEST(L10nTest, GivesUkrainianForUk) {
    EXPECT_EQ(chosen("uk"), Lang::uk);
    EXPECT_EQ(chosen("uk-UA"), Lang::uk);
}

TEST(L10nTest, GivesFrenchForFRca) { EXPECT_EQ(chosen("FR-ca"), Lang::fr); }
TEST(L10nTest, GivesGermanForDeAT) { EXPECT_EQ(chosen("de-AT"), Lang::de); }
TEST(L10nTest, GivesSpanishForEs419) { EXPECT_EQ(chosen("es-419"), Lang::es); }

TEST(L10nTest, IgnoresTheRegion) {
    EXPECT_EQ(chosen("en-GB"), Lang::en);
    EXPECT_EQ(chosen("en-US"), Lang::en);
    EXPECT_EQ(chosen("de-Latn-1901"), Lang::de);
}

TEST(L10nTest, GivesEnglishForALanguageThatItDoesNotSpeak) {
    EXPECT_EQ(chosen("pt-BR"), Lang::en);
    EXPECT_EQ(chosen("zh-Hans-CN"), Lang::en);
    EXPECT_EQ(chosen("ja"), Lang::en);
}

TEST(L10nTest, GivesEnglishForAnEntryOfOneLetter) {
    EXPECT_EQ(chosen("e"), Lang::en);
    EXPECT_EQ(chosen("r"), Lang::en);
}

TEST(L10nTest, GivesEnglishForAnEmptyList) { EXPECT_EQ(chosen(Languages{}), Lang::en); }
TEST(L10nTest, GivesEnglishForAnEmptyEntry) { EXPECT_EQ(chosen(""), Lang::en); }

TEST(L10nTest, NeverLooksAtTheSecondEntry) {
    EXPECT_EQ(chosen(Languages{"pt-BR", "ru-RU"}), Lang::en);
    EXPECT_EQ(chosen(Languages{"", "ru-RU"}), Lang::en);
    EXPECT_EQ(chosen(Languages{"de-AT", "ru-RU"}), Lang::de);
}

// A tag of three letters is cut like any other: Filipino and Estonian are no exception from the rule.
TEST(L10nTest, LooksAtTwoLettersEvenWhereTheLanguageHasThree) {
    EXPECT_EQ(chosen("ukx"), Lang::uk);
    EXPECT_EQ(chosen("est"), Lang::es);
    EXPECT_EQ(chosen("fil"), Lang::en);
}

TEST(L10nTest, LowersTheCaseOfTheCode) {
    EXPECT_EQ(chosen("RU"), Lang::ru);
    EXPECT_EQ(chosen("Uk-ua"), Lang::uk);
    EXPECT_EQ(chosen("eS_419"), Lang::es);
}

TEST(L10nTest, TakesTheKelvinSignForTheLetterWhoseCapitalItLooksLike) {
    EXPECT_EQ(chosen("U\u212A-UA"), Lang::uk);
    EXPECT_EQ(chosen("\u212AU"), Lang::en);
}

TEST(L10nTest, TakesALetterAndItsMarksForOneCharacterThatIsNotTheBareLetter) {
    EXPECT_EQ(chosen("ru\u0301-RU"), Lang::en);
    EXPECT_EQ(chosen("r\u0301u"), Lang::en);
    EXPECT_EQ(chosen("ru\u0301\u0323"), Lang::en);
    EXPECT_EQ(chosen("\u0301ru"), Lang::en);  // the mark that has no letter is the first character
    EXPECT_EQ(chosen("ru\u200D"), Lang::en);
    EXPECT_EQ(chosen("ru\uFE0F"), Lang::en);
}

TEST(L10nTest, IsNotMisledByWhatFollowsTheSecondCharacter) {
    EXPECT_EQ(chosen("ru\u00E9"), Lang::ru);
    EXPECT_EQ(chosen("rue\u0301"), Lang::ru);
    EXPECT_EQ(chosen("ru\u0440"), Lang::ru);
    EXPECT_EQ(chosen("ru\U0001F600"), Lang::ru);
    EXPECT_EQ(chosen(std::string_view("ru\0\u0301", 5)), Lang::ru);
}

TEST(L10nTest, IsNotMisledByLettersThatOnlyLookLikeACode) {
    EXPECT_EQ(chosen("\u0433u"), Lang::en);
    EXPECT_EQ(chosen("\uFF52\uFF55"), Lang::en);  // fullwidth r and u
    EXPECT_EQ(chosen("\u0131n"), Lang::en);
    EXPECT_EQ(chosen("e\u017F"), Lang::en);  // the long s is lower case already
    EXPECT_EQ(chosen(" ru"), Lang::en);
    EXPECT_EQ(chosen("r-u"), Lang::en);
}

TEST(L10nTest, TakesBytesThatAreNoCharactersForReplacementCharacters) {
    EXPECT_EQ(chosen("ru\xFF"), Lang::ru);
    EXPECT_EQ(chosen("ru\xCC"), Lang::ru);  // a combining mark torn in the middle
    EXPECT_EQ(chosen("r\xFFu"), Lang::en);
    EXPECT_EQ(chosen("\xFFru"), Lang::en);
    EXPECT_EQ(chosen("\xF2\xF5"), Lang::en);
    EXPECT_EQ(chosen("U\xE2\x84"), Lang::en);  // the Kelvin sign torn in the middle
}

// What the choice must be wherever no combining mark and no Kelvin sign can be involved.
Lang chosenAmongPlainBytes(std::string_view preferred) {
    std::string code(preferred.substr(0, 2));
    for (char& c : code) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c;
    return L10n::langFromRawValue(code).value_or(Lang::en);
}

TEST(L10nTest, SurvivesLanguageVariablesOfAnyBytes) {
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
            const Lang lang = chosen(preferred);
            const std::string beginning = preferred.substr(0, 3);
            const bool plain = std::ranges::all_of(beginning, [](char c) { return static_cast<signed char>(c) >= 0; });
            if (plain) {
                EXPECT_EQ(lang, chosenAmongPlainBytes(preferred)) << testing::PrintToString(preferred);
            }
            EXPECT_EQ(L10n({preferred}).text("about.ok"), "OK");
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

TEST(L10nTest, KeepsTheLanguagesInTheirOrderWithTheirCodes) {
    std::vector<std::string_view> codes;
    for (const Lang lang : L10n::allLanguages) codes.push_back(L10n::rawValue(lang));
    EXPECT_EQ(codes, (std::vector<std::string_view>{"en", "ru", "uk", "fr", "de", "es"}));
    EXPECT_EQ(static_cast<int>(Lang::en), 0);
    EXPECT_EQ(static_cast<int>(Lang::es), 5);
}

TEST(L10nTest, HashesLanguagesThatAreEqualAlike) {
    for (const Lang lang : L10n::allLanguages) {
        EXPECT_EQ(std::hash<Lang>{}(lang), std::hash<Lang>{}(*L10n::langFromRawValue(L10n::rawValue(lang))));
    }
}

TEST(L10nTest, LooksUpQuitInGermanAndInEnglish) {
    EXPECT_EQ(L10n({"de"}).text("menu.quit"), "Beenden");
    EXPECT_EQ(L10n({"en"}).text("menu.quit"), "Quit");
}

TEST(L10nTest, ReturnsAKeyThatTheCatalogueLacksUnchangedWhateverTheLanguage) {
    for (const Lang lang : L10n::allLanguages) {
        const L10n l10n({std::string(L10n::rawValue(lang))});
        for (const std::string_view key : {"menu.none", "", "Menu.quit", "menu.quit ", "menu", "\xFF"}) {
            EXPECT_EQ(l10n.text(key), key);
        }
    }
}

TEST(L10nTest, FallsBackToEnglishWhereTheChosenLanguageIsMissing) {
    const L10n::Catalogue catalogue{{"menu.quit", {{Lang::en, "Quit"}, {Lang::fr, "Quitter"}}}};
    EXPECT_EQ(L10n({"fr"}, catalogue).text("menu.quit"), "Quitter");
    EXPECT_EQ(L10n({"de"}, catalogue).text("menu.quit"), "Quit");
    EXPECT_EQ(L10n({"en"}, catalogue).text("menu.quit"), "Quit");
}

TEST(L10nTest, FallsBackToTheKeyWhereEnglishIsMissingToo) {
    const L10n::Catalogue catalogue{{"menu.quit", {{Lang::fr, "Quitter"}}}};
    EXPECT_EQ(L10n({"fr"}, catalogue).text("menu.quit"), "Quitter");
    EXPECT_EQ(L10n({"de"}, catalogue).text("menu.quit"), "menu.quit");
    EXPECT_EQ(L10n({"en"}, catalogue).text("menu.quit"), "menu.quit");
}

TEST(L10nTest, ReturnsTheKeyFromAnEmptyTableAndFromAnEmptyCatalogue) {
    const L10n::Catalogue emptyTable{{"menu.quit", {}}};
    const L10n::Catalogue empty;
    EXPECT_EQ(L10n({"de"}, emptyTable).text("menu.quit"), "menu.quit");
    EXPECT_EQ(L10n({"de"}, empty).text("menu.quit"), "menu.quit");
}

TEST(L10nTest, ShowsATextAsItStandsEvenWithPercentAndBraces) {
    const L10n::Catalogue catalogue{{"menu.quit", {{Lang::en, "100 % {0} %s & <b>"}}}};
    EXPECT_EQ(L10n({"en"}, catalogue).text("menu.quit"), "100 % {0} %s & <b>");
}

}  // namespace
}  // namespace kovra
