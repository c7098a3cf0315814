#include "BLE_kovra/platform/linux/theme/PanelTheme.h"

#include <gtest/gtest.h>
#include <systemd/sd-bus.h>

#include <optional>
#include <string>
#include <vector>

#include "BLE_kovra/platform/linux/bus/BusMessage.h"
#include "tests/platform/linux/loop/Turns.h"
#include "tests/platform/linux/theme/LxqtFiles.h"
#include "tests/platform/linux/theme/StandInSettings.h"
#include "tests/platform/linux/theme/StandInTray.h"
#include "tests/support/linux/PrivateBus.h"
#include "tests/support/linux/VirtualScreen.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;

// A desktop with a portal, a tray and the files of LXQt, if the test creates them.
struct ThemeRig {
    LxqtFiles files;
    VirtualScreen screen;
    PrivateBus daemon{"DBUS_SESSION_BUS_ADDRESS"};
    SdEventLoop loop;
    std::optional<StandInSettings> portal;
    std::optional<StandInTray> panel;
    SessionBus bus{loop};
    std::unique_ptr<XConnection> x = XConnection::open(loop);
    XTray tray{*x};
    std::optional<PanelTheme> theme;

    void start(std::vector<std::string> desktops) { theme.emplace(loop, bus, &tray, std::move(desktops)); }
    bool becomes(IconLook look) {
        return turnUntil(loop, [&] { return theme->look().look() == look; });
    }
};

TEST(PanelThemeTest, QueriesNothingOnDesktopsThatRecolorIcons) {
    for (const char* desktop : {"GNOME", "KDE", "XFCE"}) {
        ThemeRig rig;
        rig.portal.emplace(rig.loop, Scheme::light);
        rig.panel.emplace().announce(0x000000);
        rig.panel->appear();
        rig.start({"ubuntu", desktop});
        turnsWithin(rig.loop, 100ms);
        EXPECT_EQ(rig.theme->look().look(), IconLook::recolored);
        EXPECT_EQ(rig.portal->reads, 0);
    }
}

TEST(PanelThemeTest, RepeatsTheLookWhenPlasmasColorsChange) {
    ThemeRig rig;
    rig.start({"KDE"});
    int repeated = 0;
    const auto token = rig.theme->look().listen([&] { ++repeated; });
    turnsWithin(rig.loop, 100ms);
    EXPECT_EQ(repeated, 0);
    BusHandle plasma;
    sd_bus* opened = nullptr;
    ASSERT_GE(sd_bus_open_user(&opened), 0);
    plasma.reset(opened);
    const auto report = [&](int kind) {
        ASSERT_GE(sd_bus_emit_signal(plasma.get(), "/KGlobalSettings", "org.kde.KGlobalSettings", "notifyChange", "ii",
                                     kind, 0),
                  0);
        ASSERT_GE(sd_bus_flush(plasma.get()), 0);
    };
    constexpr int palette = 0;
    constexpr int font = 1;
    report(font);
    report(palette);
    report(palette);
    turnsWithin(rig.loop, 100ms);
    EXPECT_EQ(repeated, 0);  // the panel may not have its new colors yet
    EXPECT_TRUE(turnUntil(rig.loop, [&] { return repeated > 0; }));
    turnsWithin(rig.loop, 50ms);
    EXPECT_EQ(repeated, 1);
    EXPECT_EQ(rig.theme->look().look(), IconLook::recolored);
}

TEST(PanelThemeTest, OutlinesTheIconIfNothingIsKnown) {
    for (const std::vector<std::string>& desktops : {std::vector<std::string>{"sway"}, {"LXQt"}, {"MATE"}, {}}) {
        ThemeRig rig;
        rig.portal.emplace(rig.loop, Scheme::none);
        rig.panel.emplace().appear();
        rig.start(desktops);
        EXPECT_TRUE(turnUntil(rig.loop, [&] { return rig.portal->reads == 1; }));
        turnsWithin(rig.loop, 50ms);
        EXPECT_EQ(rig.theme->look().look(), IconLook::outlinedLight);
    }
}

TEST(PanelThemeTest, QueriesOnlyFromTheQueue) {
    ThemeRig rig;
    rig.files.addThemes();
    rig.files.choose("dark");
    rig.start({"LXQt"});
    EXPECT_EQ(rig.theme->look().look(), IconLook::outlinedLight);
    EXPECT_TRUE(rig.becomes(IconLook::onDark));
}

TEST(PanelThemeTest, TakesTheColorThatThePanelAnnounces) {
    ThemeRig rig;
    rig.portal.emplace(rig.loop, Scheme::light);
    rig.panel.emplace().announce(0xDFDBD2);
    rig.panel->appear();
    rig.start({"MATE"});
    EXPECT_TRUE(rig.becomes(IconLook::onDark));
    rig.panel->announce(0x2E3436);
    EXPECT_TRUE(rig.becomes(IconLook::onLight));
    rig.panel.reset();
    EXPECT_TRUE(rig.becomes(IconLook::outlinedDark));  // the portal's answer
}

TEST(PanelThemeTest, TakesTheThemeOfLxqtOnLxqtOnly) {
    for (const bool isLxqt : {true, false}) {
        ThemeRig rig;
        rig.files.addThemes();
        rig.files.choose("light");
        rig.portal.emplace(rig.loop, Scheme::dark);
        rig.start({isLxqt ? "LXQt" : "sway"});
        EXPECT_TRUE(turnUntil(rig.loop, [&] { return rig.portal->reads == 1; }));
        turnsWithin(rig.loop, 50ms);
        EXPECT_EQ(rig.theme->look().look(), isLxqt ? IconLook::onLight : IconLook::outlinedLight);
        rig.files.choose("dark");
        EXPECT_TRUE(rig.becomes(isLxqt ? IconLook::onDark : IconLook::outlinedLight));
    }
}

TEST(PanelThemeTest, OutlinesTheIconInTheColorsOfThePreferredScheme) {
    ThemeRig rig;
    rig.portal.emplace(rig.loop, Scheme::light);
    rig.start({"sway"});
    EXPECT_TRUE(rig.becomes(IconLook::outlinedDark));
    rig.portal->change(Scheme::dark);
    EXPECT_TRUE(rig.becomes(IconLook::outlinedLight));
    rig.portal->change(Scheme::light);
    EXPECT_TRUE(rig.becomes(IconLook::outlinedDark));
    rig.portal->change(Scheme::none);
    EXPECT_TRUE(rig.becomes(IconLook::outlinedLight));
}

TEST(PanelThemeTest, WorksWithoutAnXServer) {
    ThemeRig rig;
    rig.portal.emplace(rig.loop, Scheme::light);
    rig.theme.emplace(rig.loop, rig.bus, nullptr, std::vector<std::string>{"sway"});
    EXPECT_TRUE(rig.becomes(IconLook::outlinedDark));
}

}  // namespace
}  // namespace kovra
