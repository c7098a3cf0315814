#include "BLE_kovra/platform/linux/desktop/DesktopEntry.h"

#include <gtest/gtest.h>

#include <random>
#include <string_view>

#include "tests/support/Seeds.h"

namespace kovra {
namespace {

using Strings = std::vector<std::string>;

TEST(DesktopEntryTest, ReadsTheMainGroupAndNoOther) {
    const DesktopEntry entry(
        "Name=before any group\n# a comment=x\n[Desktop Entry]\nName = Kovra \n#Icon=none\nno sign of equality\n"
        "[Desktop Action New]\nName=Other\nExec=other\n[Desktop Entry]\nType=Application");
    EXPECT_EQ(entry.string("Name"), "Kovra");
    EXPECT_EQ(entry.string("Type"), "Application");
    EXPECT_EQ(entry.string("Exec"), std::nullopt);
    EXPECT_EQ(entry.string("#Icon"), std::nullopt);
}

TEST(DesktopEntryTest, UsesTheFirstOfTwoLinesWithTheSameKey) {
    EXPECT_EQ(DesktopEntry("[Desktop Entry]\nName=first\nName=second\n").string("Name"), "first");
}

TEST(DesktopEntryTest, AcceptsLineEndsOfOtherSystems) {
    const DesktopEntry entry("[Desktop Entry]\r\nHidden=true\r\n");
    EXPECT_EQ(entry.boolean("Hidden"), true);
}

TEST(DesktopEntryTest, ABooleanIsTrueOrFalseAndNothingElse) {
    const DesktopEntry entry("[Desktop Entry]\na=true\nb=false\nc=True\nd=1\ne=\n");
    EXPECT_EQ(entry.boolean("a"), true);
    EXPECT_EQ(entry.boolean("b"), false);
    for (const char* key : {"c", "d", "e", "absent"}) EXPECT_EQ(entry.boolean(key), std::nullopt) << key;
}

TEST(DesktopEntryTest, SplitsAListAtItsSemicolons) {
    const DesktopEntry entry("[Desktop Entry]\na=GNOME;XFCE;\nb=KDE\nc=\nd=;;X;\n");
    EXPECT_EQ(entry.list("a"), (Strings{"GNOME", "XFCE"}));
    EXPECT_EQ(entry.list("b"), Strings{"KDE"});
    EXPECT_EQ(entry.list("c"), Strings());
    EXPECT_EQ(entry.list("d"), Strings{"X"});
    EXPECT_EQ(entry.list("absent"), Strings());
}

TEST(DesktopEntryTest, UnescapesAValue) {
    EXPECT_EQ(DesktopEntry("[Desktop Entry]\na=\\sx\\ty\\\\z\\n\\q\\\n").string("a"), " x\ty\\z\n\\q\\");
}

TEST(DesktopEntryTest, ReturnsTheProgramThatIsStarted) {
    const auto program = [](const std::string& exec) {
        return DesktopEntry("[Desktop Entry]\nExec=" + exec).program();
    };
    EXPECT_EQ(program("/usr/bin/ble-kovra"), "/usr/bin/ble-kovra");
    EXPECT_EQ(program("ble-kovra --x %U"), "ble-kovra");
    EXPECT_EQ(program("\"/some where/ble-kovra\" %U"), "/some where/ble-kovra");
    EXPECT_EQ(program(R"("/a\\$b/\\"c\\"" x)"), "/a$b/\"c\"");
    EXPECT_EQ(program("\"never closed"), "never closed");
    EXPECT_EQ(program(""), std::nullopt);
    EXPECT_EQ(program("\"\""), std::nullopt);
    EXPECT_EQ(DesktopEntry("").program(), std::nullopt);
}

TEST(DesktopEntryTest, AcceptsAnyBytes) {
    for (const std::uint32_t seed : fixedAndFreshSeeds(3)) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        constexpr std::string_view alphabet("Exec=;\\\"\n\r\0[]# \xFFtrue", 20);
        for (int round = 0; round < 500; ++round) {
            std::string text = "[Desktop Entry]\n";
            for (std::size_t left = random() % 80; left > 0; --left) text += alphabet[random() % alphabet.size()];
            const DesktopEntry entry(text);
            for (const auto& value : entry.list("Exec")) EXPECT_FALSE(value.empty());
            entry.program();
            entry.boolean("Exec");
        }
    }
}

TEST(DesktopEntryTest, ChangesALineInPlaceAndKeepsEveryOtherByte) {
    DesktopEntry entry(
        "# mine\n\n[Desktop Entry]\n  Name = Kovra \r\nHidden=true\n#Hidden=x\nHidden=false\n\n\n"
        "[Desktop Action New]\nHidden=other\n");
    entry.set("Hidden", "false");
    EXPECT_EQ(entry.text(),
              "# mine\n\n[Desktop Entry]\n  Name = Kovra \r\nHidden=false\n#Hidden=x\n\n\n"
              "[Desktop Action New]\nHidden=other\n");
    entry.set("Type", "a\\b\n");
    entry.remove("Hidden");
    EXPECT_EQ(entry.text(),
              "# mine\n\n[Desktop Entry]\n  Name = Kovra \r\n#Hidden=x\nType=a\\\\b\\n\n\n\n"
              "[Desktop Action New]\nHidden=other\n");
    EXPECT_EQ(entry.string("Type"), "a\\b\n");
}

TEST(DesktopEntryTest, TerminatesItsLastLine) {
    DesktopEntry entry("[Desktop Entry]\nName=Kovra");
    entry.set("Type", "Application");
    EXPECT_EQ(entry.text(), "[Desktop Entry]\nName=Kovra\nType=Application\n");
}

TEST(DesktopEntryTest, IgnoresChangesWithoutAMainGroup) {
    DesktopEntry entry("Name=Kovra\n");
    EXPECT_FALSE(entry.hasMainGroup());
    entry.set("Type", "Application");
    EXPECT_EQ(entry.text(), "Name=Kovra\n");
    EXPECT_TRUE(DesktopEntry("[Desktop Entry]").hasMainGroup());
}

TEST(DesktopEntryTest, AcceptsAnyPathForItsProgram) {
    for (const std::string path : {"/usr/bin/ble-kovra", "/with some blanks/x", R"(/a"b`c$d\e%f%%g/'x')",
                                   "/two\nlines\t/x", "/\xD0\xB4/~#;&|<>*?()"}) {
        DesktopEntry entry("[Desktop Entry]\n");
        entry.setProgram(path);
        EXPECT_EQ(DesktopEntry(entry.text()).program(), path) << entry.text();
    }
    DesktopEntry entry("[Desktop Entry]\n");
    entry.setProgram("/usr/bin/ble-kovra");
    EXPECT_EQ(entry.text(), "[Desktop Entry]\nExec=/usr/bin/ble-kovra\n");
}

}  // namespace
}  // namespace kovra
