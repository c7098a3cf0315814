#include <gtest/gtest.h>

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "BLE_kovra/l10n/L10n.h"
#include "tests/l10n/ExpectedTexts.h"

namespace kovra {
namespace {

using Lang = L10n::Lang;

L10n onLinux(Lang lang) { return {{std::string(L10n::rawValue(lang))}, Wording::linuxDesktop}; }
L10n onMacOS(Lang lang) { return {{std::string(L10n::rawValue(lang))}, Wording::macOS}; }

// Calls check(texts) for each language, under a trace that names it.
template <typename Check>
void inEachLanguage(Check check) {
    for (const Lang lang : L10n::allLanguages) {
        SCOPED_TRACE(L10n::rawValue(lang));
        check(lang);
    }
}

bool contains(std::string_view text, std::string_view piece) { return text.find(piece) != std::string_view::npos; }

TEST(LinuxCatalogueTest, HasExactlyTheExpectedTexts) {
    std::size_t compared = 0;
    for (const auto& [lang, texts] : expectedLinuxTexts()) {
        for (const auto& [key, expected] : texts) {
            EXPECT_EQ(onLinux(lang).s(key), expected) << key;
            ++compared;
        }
    }
    EXPECT_EQ(compared, L10n::linuxStrings().size() * L10n::allLanguages.size());
}

TEST(LinuxCatalogueTest, HasEachTextInEachLanguage) {
    for (const auto& [key, table] : L10n::linuxStrings()) {
        EXPECT_EQ(table.size(), L10n::allLanguages.size()) << key;
        std::set<std::string> texts;
        for (const auto& [lang, text] : table) {
            EXPECT_FALSE(text.empty()) << key;
            texts.insert(text);
        }
        EXPECT_GE(texts.size(), 4U) << key << " looks untranslated";
    }
}

TEST(LinuxCatalogueTest, ReplacesOnlyTextsThatDiffer) {
    inEachLanguage([](Lang lang) {
        for (const auto& [key, table] : L10n::linuxStrings()) {
            const auto other = L10n::strings().find(key);
            if (other == L10n::strings().end()) continue;
            EXPECT_NE(table.at(lang), other->second.at(lang)) << key;
        }
    });
}

TEST(LinuxCatalogueTest, LeavesNothingOnLinuxThatIsTrueOnlyOnMacOS) {
    inEachLanguage([](Lang lang) {
        std::set<std::string> keys;
        for (const L10n::Catalogue* catalogue : {&L10n::strings(), &L10n::linuxStrings()}) {
            for (const auto& [key, table] : *catalogue) keys.insert(key);
        }
        for (const std::string& key : keys) {
            const std::string text = onLinux(lang).s(key);
            for (const char* untrue : {"macOS", "Opt+", "Karabiner", "Ivo Tessaly"})
                EXPECT_FALSE(contains(text, untrue)) << key << ": " << text;
        }
    });
}

TEST(LinuxCatalogueTest, NamesTheKeysAsTheyAreLabelled) {
    inEachLanguage([](Lang lang) {
        const std::string keys = lang == Lang::de ? "Strg+Alt+T" : "Ctrl+Alt+T";
        EXPECT_TRUE(onLinux(lang).s("menu.hotkeyHint").ends_with(" " + keys));
        EXPECT_TRUE(contains(onLinux(lang).s("menu.hotkeyHint.taken"), keys));
    });
}

TEST(LinuxCatalogueTest, PutsAnAssignedCombinationWhereItsOwnStands) {
    inEachLanguage([](Lang lang) {
        const std::string keys = lang == Lang::de ? "Strg+Alt+T" : "Ctrl+Alt+T";
        EXPECT_EQ(onLinux(lang).s("menu.hotkeyHint.assigned") + keys, onLinux(lang).s("menu.hotkeyHint"));
    });
}

TEST(LinuxCatalogueTest, NamesThePackageThatBringsTheIconToGNOME) {
    inEachLanguage([](Lang lang) {
        const std::string text = onLinux(lang).s("tray.advice");
        for (const char* name : {"GNOME", "gnome-shell-extension-appindicator", "AppIndicator"})
            EXPECT_TRUE(contains(text, name)) << text;
    });
}

TEST(LinuxCatalogueTest, NamesTheCommandThatCanBeGivenAKey) {
    inEachLanguage([](Lang lang) {
        EXPECT_TRUE(contains(onLinux(lang).s("menu.hotkeyHint.unavailable"), "ble-kovractl toggle"));
    });
}

TEST(LinuxCatalogueTest, ExplainsTheServiceAndTheButton) {
    const std::map<Lang, std::pair<std::string, std::string>> quotes{
        {Lang::en, {"“", "”"}}, {Lang::ru, {"«", "»"}}, {Lang::uk, {"«", "»"}}, {Lang::fr, {"«\u00a0", "\u00a0»"}},
        {Lang::de, {"„", "“"}}, {Lang::es, {"«", "»"}}};
    inEachLanguage([&](Lang lang) {
        const std::string body = onLinux(lang).s("driver.body");
        const auto& [left, right] = quotes.at(lang);
        EXPECT_TRUE(contains(body, left + onLinux(lang).s("driver.activate") + right)) << body;
        EXPECT_TRUE(contains(body, "ble-kovra-helper")) << body;
        for (const char* entry : {"menu.activate", "menu.hotkeyHint.choose"})
            EXPECT_TRUE(onLinux(lang).s(entry).ends_with("…"));
    });
}

// Otherwise a line could end with a French quotation mark, or begin with a colon.
TEST(LinuxCatalogueTest, KeepsFrenchMarksWithTheirWords) {
    for (const auto& [key, table] : L10n::linuxStrings()) {
        const std::string& text = table.at(Lang::fr);
        for (const char* divisible : {"« ", " »", " :", " ;", " !", " ?"})
            EXPECT_FALSE(contains(text, divisible)) << key << ": " << text;
    }
    EXPECT_TRUE(contains(onLinux(Lang::fr).s("tray.advice"), "«\u00a0Extensions\u00a0»"));
}

TEST(LinuxCatalogueTest, IsAskedFirstOnLinuxAndNeverOnMacOS) {
    inEachLanguage([](Lang lang) {
        for (const auto& [key, table] : L10n::linuxStrings()) {
            EXPECT_EQ(onLinux(lang).s(key), table.at(lang)) << key;
            const auto other = L10n::strings().find(key);
            EXPECT_EQ(onMacOS(lang).s(key), other == L10n::strings().end() ? key : other->second.at(lang)) << key;
        }
        EXPECT_EQ(onLinux(lang).s("menu.quit"), onMacOS(lang).s("menu.quit"));
        EXPECT_EQ(onLinux(lang).s("menu.none"), "menu.none");
    });
}

TEST(LinuxCatalogueTest, IsEnglishForOtherLanguages) {
    EXPECT_EQ(L10n({"pt-BR", "de"}, Wording::linuxDesktop).s("menu.activate"), "Activate service…");
}

}  // namespace
}  // namespace kovra
