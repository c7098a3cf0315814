#include "BLE_kovra/platform/linux/theme/LxqtTheme.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>
#include <utility>

#include "tests/platform/linux/loop/Turns.h"
#include "tests/platform/linux/theme/LxqtFiles.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;

TEST(LxqtThemeTest, ReadsTheNameFromTheGroupGeneral) {
    EXPECT_EQ(lxqtThemeName("[General]\ntheme=dark\n"), "dark");
    EXPECT_EQ(lxqtThemeName("[Other]\ntheme=dark\n[General]\nicon_theme=x\n theme = light \r\n"), "light");
    for (const char* none : {"", "theme=dark", "[Other]\ntheme=dark", "[General]\nxtheme=dark\ntheme\n"})
        EXPECT_EQ(lxqtThemeName(none), "") << none;
}

TEST(LxqtThemeTest, ReadsTheColorOfTheTextOnThePanelsButtons) {
    const std::pair<const char*, std::optional<std::uint32_t>> sheets[] = {
        {"Plugin > QToolButton { color: black; }", 0x000000},
        {"Plugin > QToolButton { color: white }", 0xFFFFFF},
        {"Plugin > QToolButton{margin:0;color:#DEDEDE;border:1px}", 0xDEDEDE},
        {"Plugin > QToolButton { color: #f80; }", 0xFF8800},
        {"Plugin > QToolButton { color: rgba(1, 2, 255, 60%); }", 0x0102FF},
        {"Plugin > QToolButton { color: rgb(1,2,3); }", 0x010203},
        {"/* Plugin > QToolButton { color: white; } */ A,\nPlugin  >  QToolButton,\n B { color: /* x */ black; }", 0},
        {"Plugin > QToolButton { background-color: white; qproperty-iconSize: 22px; color: black; }", 0x000000},
        {"Plugin > QToolButton:hover { color: white; } Plugin > QToolButton { color: black; }", 0x000000},
        {"Plugin > QToolButton { color: black; } Plugin > QToolButton:hover { color: white; }", 0x000000},
        {"Plugin > QToolButton { color: palette(text); }", std::nullopt},
        {"Plugin > QToolButton { color: rgb(1,2); }", std::nullopt},
        {"Plugin > QToolButton { color: rgb(1,2,256); }", std::nullopt},
        {"Plugin > QToolButton { color: rgb(100%, 100%, 100%); }", std::nullopt},
        {"Plugin > QToolButton { color: rgb(1 ,2 ,3 ); }", 0x010203},
        {"Plugin > QToolButton { color: #12345g; }", std::nullopt},
        {"Plugin > QToolButton { color: #12; }", std::nullopt},
        {"Plugin > QToolButton { background-color: white; }", std::nullopt},
        {"QToolButton { color: white; }", std::nullopt},
        {"Plugin > QToolButton { color", std::nullopt},
        {"Plugin > QToolButton } color: white; {", std::nullopt},
        {"/* Plugin > QToolButton { color: white; }", std::nullopt},
        {"", std::nullopt},
    };
    for (const auto& [sheet, color] : sheets) EXPECT_EQ(lxqtTextColor(sheet), color) << sheet;
}

TEST(LxqtThemeTest, IsLightBehindDarkTextAndDarkBehindLightText) {
    LxqtFiles files;
    SdEventLoop loop;
    files.write("data/lxqt/themes/one/lxqt-panel.qss", "Plugin > QToolButton { color: #202020; }");
    files.write("data/lxqt/themes/two/lxqt-panel.qss", "Plugin > QToolButton { color: #dedede; }");
    files.choose("one");
    EXPECT_EQ(LxqtTheme(loop, [] {}).tone(), PanelTone::light);
    files.choose("two");
    EXPECT_EQ(LxqtTheme(loop, [] {}).tone(), PanelTone::dark);
}

TEST(LxqtThemeTest, IsUnknownWithoutAConfigurationAThemeOrAColor) {
    LxqtFiles files;
    SdEventLoop loop;
    EXPECT_EQ(LxqtTheme(loop, [] {}).tone(), std::nullopt);
    files.choose("missing");
    EXPECT_EQ(LxqtTheme(loop, [] {}).tone(), std::nullopt);
    files.write("data/lxqt/themes/system/lxqt-panel.qss", "Plugin > QToolButton { margin: 0; }");
    files.choose("system");
    EXPECT_EQ(LxqtTheme(loop, [] {}).tone(), std::nullopt);
    files.write("lxqt-panel.qss", "Plugin > QToolButton { color: white; }");
    files.choose("../../..");
    EXPECT_EQ(LxqtTheme(loop, [] {}).tone(), std::nullopt);
}

TEST(LxqtThemeTest, PrefersTheUsersConfigurationAndThemesToThoseOfTheSystem) {
    LxqtFiles files;
    SdEventLoop loop;
    files.write("system-config/lxqt/lxqt.conf", "[General]\ntheme=one\n");
    files.write("system-data/lxqt/themes/one/lxqt-panel.qss", "Plugin > QToolButton { color: black; }");
    EXPECT_EQ(LxqtTheme(loop, [] {}).tone(), PanelTone::light);
    files.write("data/lxqt/themes/one/lxqt-panel.qss", "Plugin > QToolButton { color: white; }");
    EXPECT_EQ(LxqtTheme(loop, [] {}).tone(), PanelTone::dark);
    files.write("system-data/lxqt/themes/two/lxqt-panel.qss", "Plugin > QToolButton { color: black; }");
    files.choose("two");
    EXPECT_EQ(LxqtTheme(loop, [] {}).tone(), PanelTone::light);
}

TEST(LxqtThemeTest, FollowsTheConfigurationHoweverItIsWritten) {
    LxqtFiles files;
    SdEventLoop loop;
    files.addThemes();
    files.choose("light");
    int changes = 0;
    LxqtTheme theme(loop, [&] { ++changes; });
    EXPECT_EQ(theme.tone(), PanelTone::light);
    files.choose("dark");
    EXPECT_TRUE(turnUntil(loop, [&] { return theme.tone() == PanelTone::dark; }));
    files.write("other", "[General]\ntheme=light\n");
    std::filesystem::rename(files.path("other"), files.path("config/lxqt/lxqt.conf"));
    EXPECT_TRUE(turnUntil(loop, [&] { return theme.tone() == PanelTone::light; }));
    EXPECT_EQ(changes, 2);
}

TEST(LxqtThemeTest, ReportsNoChangeOfAnythingButTheTone) {
    LxqtFiles files;
    SdEventLoop loop;
    files.addThemes();
    files.choose("light");
    int changes = 0;
    LxqtTheme theme(loop, [&] { ++changes; });
    files.write("data/lxqt/themes/bright/lxqt-panel.qss", "Plugin > QToolButton { color: #333; }");
    files.write("config/lxqt/panel.conf", "[panel1]\n");
    files.choose("bright");
    turnsWithin(loop, 50ms);
    EXPECT_EQ(changes, 0);
    EXPECT_LT(turnsWithin(loop, 100ms), 4);
}

}  // namespace
}  // namespace kovra
