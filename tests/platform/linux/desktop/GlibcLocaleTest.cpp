#include "BLE_kovra/platform/linux/desktop/GlibcLocale.h"

#include <gtest/gtest.h>
#include <wctype.h>

#include <algorithm>
#include <filesystem>
#include <ios>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "tests/contracts/LocaleContract.h"
#include "tests/support/Environment.h"
#include "tests/support/Seeds.h"

// LeakSanitizer calls this function for patterns of leaks to ignore. The C library leaks parts of LOCPATH, which only
// tests set, if a locale is missing. With the library's debugging symbols the names of its functions start with two
// underscores, so the patterns match a part of a name.
extern "C" const char* __lsan_default_suppressions();  // NOLINT(bugprone-reserved-identifier)
extern "C" const char* __lsan_default_suppressions() { return "leak:argz_add_sep\nleak:argz_create_sep\n"; }

namespace kovra {
namespace {

using Names = std::vector<std::string>;

// An environment that sets no language and contains the path of the locales of these tests.
class LocaleEnvironment : public Environment {
  public:
    LocaleEnvironment() {
        unset({"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LC_COLLATE", "LC_CTYPE", "LANG"});
        set("LOCPATH", KOVRA_TEST_LOCALES ":/usr/lib/locale");
    }
};

class BritishDriver {
  public:
    BritishDriver() {
        environment_.set("LANG", "ru_RU.UTF-8");
        environment_.set("LANGUAGE", "en_GB:ru_RU");
    }
    const Locale& locale() {
        if (!locale_) locale_ = std::make_unique<GlibcLocale>();
        return *locale_;
    }

  private:
    LocaleEnvironment environment_;
    std::unique_ptr<GlibcLocale> locale_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(GlibcLocale, LocaleContract, BritishDriver);

class GlibcLocaleTest : public testing::Test {
  protected:
    Names languages() const { return GlibcLocale().preferredLanguages(); }
    static Names sorted(const GlibcLocale& locale, Names names) {
        std::ranges::stable_sort(names, [&](const std::string& first, const std::string& second) {
            return locale.isAscending(locale.sortKey(first), locale.sortKey(second));
        });
        return names;
    }
    Names sortedIn(const std::string& name, Names names) {
        environment_.set("LANG", name);
        return sorted(GlibcLocale(), std::move(names));
    }

    static std::string utf8(wint_t character) {
        return std::filesystem::path(std::u32string(1, static_cast<char32_t>(character))).string();
    }

    LocaleEnvironment environment_;
};

TEST_F(GlibcLocaleTest, HasNoLanguageIfNoneIsNamed) { EXPECT_EQ(languages(), Names()); }

TEST_F(GlibcLocaleTest, UsesTheFirstVariableThatIsSet) {
    environment_.set("LANG", "de_DE.UTF-8");
    EXPECT_EQ(languages(), Names{"de-DE"});
    environment_.set("LC_COLLATE", "tr_TR.UTF-8");
    environment_.set("LC_CTYPE", "tr_TR.UTF-8");
    EXPECT_EQ(languages(), Names{"de-DE"});
    environment_.set("LC_MESSAGES", "fr_FR.UTF-8");
    EXPECT_EQ(languages(), Names{"fr-FR"});
    environment_.set("LC_ALL", "uk_UA.UTF-8");
    EXPECT_EQ(languages(), Names{"uk-UA"});
    environment_.set("LANGUAGE", "es:ru_RU");
    EXPECT_EQ(languages(), (Names{"es", "ru-RU"}));
}

TEST_F(GlibcLocaleTest, TreatsAnEmptyVariableAsUnset) {
    environment_.set("LANG", "de_DE.UTF-8");
    environment_.set("LC_MESSAGES", "");
    environment_.set("LC_ALL", "");
    environment_.set("LANGUAGE", "");
    EXPECT_EQ(languages(), Names{"de-DE"});
}

TEST_F(GlibcLocaleTest, IgnoresTheLanguageListInTheCLocale) {
    environment_.set("LANGUAGE", "ru:de");
    EXPECT_EQ(languages(), Names());
    for (const char* plain : {"C", "POSIX", "C.UTF-8", "C.utf8", "C.anything", "C@modifier"}) {
        environment_.set("LANG", plain);
        EXPECT_EQ(languages(), Names()) << plain;
    }
    environment_.set("LC_ALL", "C");
    environment_.set("LANG", "ru_RU.UTF-8");
    EXPECT_EQ(languages(), Names());
}

TEST_F(GlibcLocaleTest, EndsTheListAtTheCLocale) {
    environment_.set("LANG", "ru_RU.UTF-8");
    environment_.set("LANGUAGE", "de:C:fr");
    EXPECT_EQ(languages(), Names{"de"});
    environment_.set("LANGUAGE", "C:fr");
    EXPECT_EQ(languages(), Names());
}

TEST_F(GlibcLocaleTest, ConvertsLocalesToLanguageTags) {
    const std::vector<std::pair<const char*, const char*>> tags{
        {"ru_RU.UTF-8", "ru-RU"},     {"ru_RU", "ru-RU"},      {"ru", "ru"},
        {"sr_RS@latin", "sr-RS"},     {"de_DE@euro", "de-DE"}, {"de_DE.ISO-8859-15@euro", "de-DE"},
        {"zh_Hant_TW", "zh-Hant-TW"}, {"ru-RU", "ru-RU"},      {"Cx", "Cx"},
        {"russian", "russian"}};
    for (const auto& [locale, tag] : tags) {
        environment_.set("LANG", locale);
        EXPECT_EQ(languages(), Names{tag});
    }
}

TEST_F(GlibcLocaleTest, SkipsEmptyEntriesInTheList) {
    environment_.set("LANG", "ru_RU.UTF-8");
    environment_.set("LANGUAGE", "::de_DE.UTF-8@x::fr:");
    EXPECT_EQ(languages(), (Names{"de-DE", "fr"}));
    environment_.set("LANGUAGE", ":");
    EXPECT_EQ(languages(), Names());
}

TEST_F(GlibcLocaleTest, SurvivesVariablesWithAnyBytes) {
    for (const std::uint32_t seed : fixedAndFreshSeeds(1)) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        for (int round = 0; round < 300; ++round) {
            for (const char* name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LC_COLLATE", "LC_CTYPE", "LANG"}) {
                std::string value;
                const auto size = random() % 4 == 0 ? random() % 5000 : random() % 8;
                constexpr std::string_view marks = ":._@-/CUruRU8";
                while (value.size() < size) {
                    const bool any = random() % 3 == 0;
                    value += any ? static_cast<char>(static_cast<unsigned char>(random() % 255 + 1))
                                 : marks[random() % marks.size()];
                }
                environment_.set(name, value);
            }
            const GlibcLocale locale;
            for (const std::string& tag : locale.preferredLanguages()) EXPECT_NE(tag, "");
            EXPECT_EQ(sorted(locale, {"b", "C", "A"}), (Names{"A", "b", "C"}));
        }
    }
}

TEST_F(GlibcLocaleTest, SortsNamesByTheRulesOfTheUsersLanguage) {
    EXPECT_EQ(sortedIn("ru_RU.UTF-8", {"яблоко", "ёлка", "Жук", "елка", "Мышь"}),
              (Names{"елка", "ёлка", "Жук", "Мышь", "яблоко"}));
    EXPECT_EQ(sortedIn("de_DE.UTF-8", {"Zebra", "Äpfel", "Apfel", "öl", "Ofen"}),
              (Names{"Apfel", "Äpfel", "Ofen", "öl", "Zebra"}));
    EXPECT_EQ(sortedIn("tr_TR.UTF-8", {"ı", "I", "i", "İ", "h", "j"}), (Names{"h", "ı", "I", "i", "İ", "j"}));
}

TEST_F(GlibcLocaleTest, SortsNamesByCodePointIfTheLocaleIsNotInstalled) {
    for (const char* name : {"C", "POSIX", "C.UTF-8", "xx_XX.UTF-8", "", "../../etc", "\xFF"}) {
        EXPECT_EQ(sortedIn(name, {"ya", "ёлка", "B", "елка", "a", "Ä", "c", "ä"}),
                  (Names{"a", "B", "c", "ya", "Ä", "ä", "елка", "ёлка"}))
            << name;
    }
}

TEST_F(GlibcLocaleTest, SortsNamesEvenIfNoLocaleIsInstalled) {
    environment_.set("LOCPATH", "/nowhere");
    EXPECT_EQ(sortedIn("ru_RU.UTF-8", {"b", "Мышь", "A", "C"}), (Names{"A", "b", "C", "Мышь"}));
}

TEST_F(GlibcLocaleTest, SortsUtf8EvenIfTheUserHasAnotherCharacterSet) {
    // The user's locale is ru_RU.KOI8-R. The names are UTF-8 nevertheless, so they are sorted as in ru_RU.UTF-8.
    EXPECT_EQ(sortedIn("ru_RU.KOI8-R", {"яблоко", "ёлка", "Жук", "ЖУК 2"}), (Names{"ёлка", "Жук", "ЖУК 2", "яблоко"}));
    EXPECT_EQ(sortedIn("ru_RU", {"яблоко", "ёлка", "Жук", "ЖУК 2"}), (Names{"ёлка", "Жук", "ЖУК 2", "яблоко"}));
}

TEST_F(GlibcLocaleTest, TakesTheSortOrderFromItsOwnVariable) {
    environment_.set("LC_COLLATE", "de_DE.UTF-8");
    EXPECT_EQ(sortedIn("C", {"Zebra", "Äpfel"}), (Names{"Äpfel", "Zebra"}));
    environment_.set("LC_ALL", "C");
    EXPECT_EQ(sortedIn("de_DE.UTF-8", {"Äpfel", "Zebra"}), (Names{"Zebra", "Äpfel"}));
}

TEST_F(GlibcLocaleTest, GivesNamesThatDifferOnlyInCaseTheSameKey) {
    for (const char* name : {"C.UTF-8", "ru_RU.UTF-8", "de_DE.UTF-8"}) {
        environment_.set("LANG", name);
        const GlibcLocale locale;
        const auto same = [&](const char* first, const char* second) {
            EXPECT_EQ(locale.sortKey(first), locale.sortKey(second)) << name << ": " << first << ", " << second;
        };
        same("МЫШЬ", "мышь");
        same("Ёлка", "ёлкА");
        same("ÄÖÜ", "äöü");
        same("ΟΔΟΣ", "οδος");
        same("ΟΔΟΣ", "οδοσ");
        EXPECT_NE(locale.sortKey("мышь"), locale.sortKey("мыш"));
        EXPECT_NE(locale.sortKey("ä"), locale.sortKey("a"));
    }
}

TEST_F(GlibcLocaleTest, IgnoresTheCaseOfEveryCharacter) {
    const locale_t plain = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    ASSERT_NE(plain, nullptr);
    environment_.set("LANG", "de_DE.UTF-8");
    const GlibcLocale locale;
    int pairs = 0;
    for (wint_t c = 1; c <= 0x10FFFF; ++c) {
        for (const wint_t other : {::towupper_l(c, plain), ::towlower_l(c, plain)}) {
            if (other == c) continue;
            ++pairs;
            EXPECT_EQ(locale.sortKey(utf8(c)), locale.sortKey(utf8(other))) << std::hex << c;
        }
    }
    EXPECT_GT(pairs, 2500);
    ::freelocale(plain);
}

TEST_F(GlibcLocaleTest, KeepsItsSortOrderWhenTheEnvironmentChanges) {
    environment_.set("LANG", "de_DE.UTF-8");
    const GlibcLocale locale;
    environment_.set("LANG", "C");
    EXPECT_EQ(sorted(locale, {"Zebra", "Äpfel"}), (Names{"Äpfel", "Zebra"}));
}

}  // namespace
}  // namespace kovra
