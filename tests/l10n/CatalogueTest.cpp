#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "BLE_kovra/l10n/L10n.h"
#include "BLE_kovra/l10n/SupportAddress.h"
#include "BLE_kovra/platform/Utf8.h"
#include "tests/l10n/ExpectedTexts.h"

namespace kovra {
namespace {

using Lang = L10n::Lang;

std::string text(Lang lang, const std::string& key) { return L10n({std::string(L10n::rawValue(lang))}).s(key); }

// Calls check(language, text) for every text of the catalogue, under a trace that names its key and language.
template <typename Check>
void forEachText(Check check) {
    for (const auto& [key, table] : L10n::strings()) {
        for (const auto& [lang, shipped] : table) {
            SCOPED_TRACE(key + " in " + std::string(L10n::rawValue(lang)));
            check(lang, shipped);
        }
    }
}

template <typename Check>
void forEachLanguageOf(const std::string& key, Check check) {
    for (const Lang lang : L10n::allLanguages) {
        SCOPED_TRACE(key + " in " + std::string(L10n::rawValue(lang)));
        check(text(lang, key));
    }
}

std::vector<std::string> parts(std::string_view text, std::string_view separator) {
    std::vector<std::string> result;
    for (std::size_t end = text.find(separator); end != std::string_view::npos; end = text.find(separator)) {
        result.emplace_back(text.substr(0, end));
        text.remove_prefix(end + separator.size());
    }
    result.emplace_back(text);
    return result;
}

std::size_t occurrences(std::string_view text, std::string_view piece) { return parts(text, piece).size() - 1; }

TEST(CatalogueTest, HasTheExpectedTexts) {
    std::size_t compared = 0;
    for (const auto& [lang, texts] : expectedTexts()) {
        const L10n l10n({std::string(L10n::rawValue(lang))});
        for (const auto& [key, expected] : texts) {
            SCOPED_TRACE(key + " in " + std::string(L10n::rawValue(lang)));
            EXPECT_EQ(l10n.s(key), expected);
            ++compared;
        }
    }
    EXPECT_EQ(compared, 156U);
}

TEST(CatalogueTest, HasExactlyTwentySixKeys) {
    std::set<std::string> shipped;
    for (const auto& [key, table] : L10n::strings()) shipped.insert(key);
    EXPECT_EQ(shipped.size(), 26U);
    for (const auto& [lang, texts] : expectedTexts()) {
        std::set<std::string> expected;
        for (const ExpectedText& entry : texts) expected.insert(entry.key);
        EXPECT_EQ(shipped, expected) << L10n::rawValue(lang);
    }
}

TEST(CatalogueTest, HasEveryKeyInAllSixLanguages) {
    for (const auto& [key, table] : L10n::strings()) {
        EXPECT_EQ(table.size(), 6U) << key;
        for (const Lang lang : L10n::allLanguages) EXPECT_TRUE(table.contains(lang)) << key;
    }
}

TEST(CatalogueTest, HasNoEmptyText) {
    forEachText([](Lang, const std::string& shipped) { EXPECT_FALSE(shipped.empty()); });
}

TEST(CatalogueTest, IsValidUtf8) {
    forEachText([](Lang, const std::string& shipped) { EXPECT_EQ(validUtf8(shipped), shipped); });
}

TEST(CatalogueTest, IsBuiltOnce) { EXPECT_EQ(&L10n::strings(), &L10n::strings()); }

TEST(CatalogueTest, NamesKeysInPlainAsciiWithOneDotExceptBlock) {
    const auto isAsciiLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
    for (const auto& [key, table] : L10n::strings()) {
        EXPECT_EQ(occurrences(key, "."), key == "block" ? 0U : 1U) << key;
        for (const std::string& name : parts(key, ".")) {
            EXPECT_TRUE(!name.empty() && name.front() >= 'a' && name.front() <= 'z') << key;
            EXPECT_TRUE(std::ranges::all_of(name, isAsciiLetter)) << key;
        }
    }
}

TEST(CatalogueTest, DescribesTheProgramInTwoParagraphsTheSecondOfTwoLines) {
    forEachLanguageOf("about.info", [](const std::string& info) {
        const auto paragraphs = parts(info, "\n\n");
        ASSERT_EQ(paragraphs.size(), 2U);
        EXPECT_EQ(occurrences(paragraphs[0], "\n"), 0U);
        const auto lines = parts(paragraphs[1], "\n");
        ASSERT_EQ(lines.size(), 2U);
        EXPECT_TRUE(lines[0].ends_with(": Tamsin Orlek"));
        EXPECT_TRUE(lines[1].ends_with(std::string(": ") + supportAddress));
    });
}

TEST(CatalogueTest, ExplainsTheDriverInThreeParagraphs) {
    forEachLanguageOf("driver.body", [](const std::string& body) {
        const auto paragraphs = parts(body, "\n\n");
        ASSERT_EQ(paragraphs.size(), 3U);
        for (const std::string& paragraph : paragraphs) {
            EXPECT_FALSE(paragraph.empty());
            EXPECT_EQ(occurrences(paragraph, "\n"), 0U);
        }
    });
}

TEST(CatalogueTest, HasLineFeedsInTheTwoTextsOfSeveralParagraphsAlone) {
    for (const auto& [key, table] : L10n::strings()) {
        for (const auto& [lang, shipped] : table) {
            EXPECT_EQ(shipped.find('\n') != std::string::npos, key == "about.info" || key == "driver.body") << key;
            EXPECT_EQ(shipped.find_first_of("\r\t"), std::string::npos) << key;
        }
    }
}

TEST(CatalogueTest, EndsTheDevelopersNameWithASpaceAndAMiddleDotForTheLinkThatFollows) {
    forEachLanguageOf("settings.developedBy",
                      [](const std::string& label) { EXPECT_TRUE(label.ends_with(": Tamsin Orlek \u00B7")); });
}

TEST(CatalogueTest, EndsMenuTitlesThatOpenSomethingWithOneEllipsisCharacter) {
    for (const std::string key : {"menu.settings", "menu.activate", "menu.about"}) {
        forEachLanguageOf(key, [](const std::string& title) { EXPECT_TRUE(title.ends_with("\u2026")); });
    }
}

TEST(CatalogueTest, SaysOkInEveryLanguage) {
    forEachLanguageOf("about.ok", [](const std::string& title) { EXPECT_EQ(title, "OK"); });
}

TEST(CatalogueTest, SetsNoTypewriterQuotesOrDotsAndNoSpaceButTheOrdinaryOne) {
    forEachText([](Lang, const std::string& shipped) {
        for (const std::string_view unwanted : {"\"", "'", "...", "--", "\u00A0", "\u2009", "\u202F", "\uFEFF"}) {
            EXPECT_EQ(occurrences(shipped, unwanted), 0U) << unwanted;
        }
    });
}

TEST(CatalogueTest, QuotesAsEachLanguageDoes) {
    struct Quotes {
        std::string_view opening, closing;
    };
    const auto quotesOf = [](Lang lang) -> Quotes {
        if (lang == Lang::en) return {"\u201C", "\u201D"};
        if (lang == Lang::de) return {"\u201E", "\u201C"};
        return {"\u00AB", "\u00BB"};
    };
    forEachText([&](Lang lang, const std::string& shipped) {
        const Quotes quotes = quotesOf(lang);
        EXPECT_EQ(occurrences(shipped, quotes.opening), occurrences(shipped, quotes.closing));
        for (const std::string_view mark : {"\u00AB", "\u00BB", "\u201C", "\u201D", "\u201E"}) {
            if (mark == quotes.opening || mark == quotes.closing) continue;
            EXPECT_EQ(occurrences(shipped, mark), 0U) << mark;
        }
    });
    forEachLanguageOf("driver.body", [](const std::string& body) {
        EXPECT_GE(occurrences(body, "\u00AB") + occurrences(body, "\u201C"), 2U);
    });
}

TEST(CatalogueTest, SetsAnOrdinarySpaceBeforeAColonInFrenchAndNowhereElse) {
    EXPECT_EQ(text(Lang::fr, "settings.mode"), "Mode\x20:");
    forEachText([](Lang lang, const std::string& shipped) {
        const std::size_t expected = lang == Lang::fr ? occurrences(shipped, ":") : 0;
        EXPECT_EQ(occurrences(shipped, "\x20:"), expected);
    });
}

TEST(SupportAddressTest, IsAnAddressThatAMailLinkCanHold) {
    const std::string_view address = supportAddress;
    EXPECT_EQ(occurrences(address, "@"), 1U);
    EXPECT_FALSE(address.starts_with('@') || address.ends_with('@'));
    EXPECT_TRUE(std::ranges::all_of(address, [](char c) { return c > ' ' && c < '\x7F'; }));
}

}  // namespace
}  // namespace kovra
