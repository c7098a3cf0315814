#include "BLE_kovra/platform/linux/theme/PortalColorScheme.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <optional>
#include <string>

#include "tests/platform/linux/bus/Forger.h"
#include "tests/platform/linux/loop/Turns.h"
#include "tests/platform/linux/theme/StandInSettings.h"
#include "tests/support/linux/PrivateBus.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;

struct SchemeRig {
    PrivateBus daemon{"DBUS_SESSION_BUS_ADDRESS"};
    SdEventLoop loop;
    std::optional<StandInSettings> portal;
    SessionBus bus{loop};
    std::string reports;
    std::optional<PortalColorScheme> scheme;

    void listen() {
        scheme.emplace(bus, [this](std::optional<PanelTone> tone) {
            reports += !tone ? "none; " : tone == PanelTone::light ? "light; " : "dark; ";
        });
    }
    bool reported(const std::string& wanted) {
        return turnUntil(loop, [&] { return reports == wanted; });
    }
    // Waits until the portal or the bus has answered a call. Earlier messages have then been received.
    void settle() {
        ASSERT_TRUE(turnUntil(loop, [this] { return bus.bus() != nullptr && sd_bus_is_ready(bus.bus()) > 0; }));
        for (int round = 0; round < 4; ++round) {
            bool isAnswered = false;
            sd_bus_slot* slot = nullptr;
            ASSERT_GE(
                sd_bus_call_method_async(bus.bus(), &slot, portal ? StandInSettings::busName : "org.freedesktop.DBus",
                                         "/", "org.freedesktop.DBus.Peer", "Ping", answered, &isAnswered, ""),
                0);
            const BusSlot held(slot);
            ASSERT_TRUE(turnUntil(loop, [&] { return isAnswered; }));
        }
    }

  private:
    static int answered(sd_bus_message*, void* context, sd_bus_error*) {
        *static_cast<bool*>(context) = true;
        return 0;
    }
};

TEST(PortalColorSchemeTest, ReadsTheSchemeOfARunningPortal) {
    for (const auto& [value, report] : {std::pair(Scheme::dark, "dark; "), std::pair(Scheme::light, "light; ")}) {
        SchemeRig rig;
        rig.portal.emplace(rig.loop, value);
        rig.listen();
        EXPECT_TRUE(rig.reported(report));
        rig.settle();
        EXPECT_EQ(rig.portal->reads, 1);
    }
}

TEST(PortalColorSchemeTest, KnowsNothingOfAUserWithoutAPreference) {
    for (const std::uint32_t value : {Scheme::none, 3U, ~0U}) {
        SchemeRig rig;
        rig.portal.emplace(rig.loop, value);
        rig.listen();
        rig.settle();
        EXPECT_EQ(rig.portal->reads, 1);
        EXPECT_EQ(rig.reports, "");
    }
}

TEST(PortalColorSchemeTest, ReportsEachChangeOnce) {
    SchemeRig rig;
    rig.portal.emplace(rig.loop, Scheme::dark);
    rig.listen();
    EXPECT_TRUE(rig.reported("dark; "));
    rig.portal->change(Scheme::light);
    EXPECT_TRUE(rig.reported("dark; light; "));
    rig.portal->change(Scheme::light);
    rig.portal->change(Scheme::none);
    EXPECT_TRUE(rig.reported("dark; light; none; "));
    rig.portal->change(Scheme::dark);
    EXPECT_TRUE(rig.reported("dark; light; none; dark; "));
    EXPECT_EQ(rig.portal->reads, 1);
}

TEST(PortalColorSchemeTest, ReadsTheSchemeOfAPortalThatStartsLateOrAgain) {
    SchemeRig rig;
    rig.listen();
    rig.settle();
    EXPECT_EQ(rig.reports, "");
    rig.portal.emplace(rig.loop, Scheme::dark);
    EXPECT_TRUE(rig.reported("dark; "));
    rig.portal->stop();
    rig.portal->scheme = Scheme::light;
    rig.portal->start();
    EXPECT_TRUE(rig.reported("dark; light; "));
}

TEST(PortalColorSchemeTest, ReadsTheSchemeAgainAfterTheBusWasAway) {
    SchemeRig rig;
    rig.portal.emplace(rig.loop, Scheme::dark);
    rig.listen();
    EXPECT_TRUE(rig.reported("dark; "));
    rig.portal.reset();
    rig.daemon.end();
    ASSERT_TRUE(turnUntil(rig.loop, [&] { return rig.bus.bus() == nullptr; }));
    rig.daemon.restart();
    rig.portal.emplace(rig.loop, Scheme::light);
    EXPECT_TRUE(rig.reported("dark; light; "));
}

TEST(PortalColorSchemeTest, IgnoresOtherSettingsAndValuesOfOtherTypes) {
    SchemeRig rig;
    rig.portal.emplace(rig.loop, Scheme::dark);
    rig.listen();
    EXPECT_TRUE(rig.reported("dark; "));
    rig.portal->report("org.freedesktop.appearance", "contrast", "u", Scheme::light);
    rig.portal->report("org.example", "color-scheme", "u", Scheme::light);
    rig.portal->report("org.freedesktop.appearance", "color-scheme", "s", "light");
    rig.settle();
    EXPECT_EQ(rig.reports, "dark; ");
    SchemeRig other;
    other.portal.emplace(other.loop, Scheme::dark);
    other.portal->answersWithText = true;
    other.listen();
    other.settle();
    EXPECT_EQ(other.portal->reads, 1);
    EXPECT_EQ(other.reports, "");
}

TEST(PortalColorSchemeTest, IsKnownByTheFirstChangeOfAPortalThatLackedTheSetting) {
    SchemeRig rig;
    rig.portal.emplace(rig.loop);
    rig.portal->hasScheme = false;
    rig.listen();
    rig.settle();
    EXPECT_EQ(rig.reports, "");
    rig.portal->change(Scheme::light);
    EXPECT_TRUE(rig.reported("light; "));
}

TEST(PortalColorSchemeTest, IgnoresAChangeThatAnotherClientForges) {
    SchemeRig rig;
    rig.portal.emplace(rig.loop, Scheme::dark);
    rig.listen();
    EXPECT_TRUE(rig.reported("dark; "));
    const char* name = nullptr;
    ASSERT_GE(sd_bus_get_unique_name(rig.bus.bus(), &name), 0);
    Forger(Forger::Bus::session)
        .send(name, "/org/freedesktop/portal/desktop", "org.freedesktop.portal.Settings", "SettingChanged", "ssv",
              "org.freedesktop.appearance", "color-scheme", "u", Scheme::light);
    rig.settle();
    EXPECT_EQ(rig.reports, "dark; ");
}

TEST(PortalColorSchemeTest, CausesNoWakeUpsWhileNothingChanges) {
    SchemeRig rig;
    rig.listen();
    rig.settle();
    EXPECT_LT(turnsWithin(rig.loop, 100ms), 4);
}

}  // namespace
}  // namespace kovra
