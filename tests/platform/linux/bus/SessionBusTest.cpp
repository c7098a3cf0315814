#include "BLE_kovra/platform/linux/bus/SessionBus.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "tests/platform/linux/bus/SilentBus.h"
#include "tests/platform/linux/loop/Turns.h"
#include "tests/support/Environment.h"
#include "tests/support/linux/PrivateBus.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;

constexpr const char* sessionBus = "DBUS_SESSION_BUS_ADDRESS";

// The session's bus and a record of what was told: "up " and "gone ".
struct BusRig {
    PrivateBus daemon{sessionBus};
    SdEventLoop loop;
    std::string told;
    SessionBus bus{loop};
    BusToken listener = listen();

    BusToken listen() {
        return bus.listen([this](BusConnection* connection) {
            EXPECT_EQ(connection, bus.connection());
            if (connection != nullptr) {
                EXPECT_GT(sd_bus_is_ready(connection->bus()), 0);
            }
            told += connection != nullptr ? "up " : "gone ";
        });
    }
    bool hears(const std::string& words) {
        return turnUntil(loop, [&] { return told == words; });
    }
};

TEST(SessionBusTest, TellsFromTheQueueThatItIsUp) {
    BusRig rig;
    EXPECT_EQ(rig.told, "");
    EXPECT_TRUE(rig.hears("up "));
}

TEST(SessionBusTest, TellsALateListenerAtOnceThatItIsUp) {
    BusRig rig;
    ASSERT_TRUE(rig.hears("up "));
    const auto late = rig.listen();
    EXPECT_EQ(rig.told, "up ");
    EXPECT_TRUE(rig.hears("up up "));
    EXPECT_LT(turnsWithin(rig.loop, 50ms), 10);
    EXPECT_EQ(rig.told, "up up ");
}

TEST(SessionBusTest, TellsNobodyWhoListensNoMore) {
    BusRig rig;
    ASSERT_TRUE(rig.hears("up "));
    auto second = rig.listen();
    second.reset();
    rig.listener.reset();
    rig.daemon.end();
    EXPECT_TRUE(turnUntil(rig.loop, [&] { return rig.bus.bus() == nullptr; }));
    EXPECT_EQ(rig.told, "up ");
}

TEST(SessionBusTest, ConnectsAgainWhenTheBusIsBackAtItsAddress) {
    BusRig rig;
    ASSERT_TRUE(rig.hears("up "));
    for (std::string all = "up "; all.size() < 20;) {
        rig.daemon.end();
        all += "gone ";
        ASSERT_TRUE(rig.hears(all));
        rig.daemon.restart();
        all += "up ";
        ASSERT_TRUE(rig.hears(all));
    }
}

TEST(SessionBusTest, TriesAgainUntilTheBusIsThere) {
    BusRig rig;
    ASSERT_TRUE(rig.hears("up "));
    rig.daemon.end();
    // A second, then two: at least the first attempt fails.
    EXPECT_LT(turnsWithin(rig.loop, 1500ms), 50);
    EXPECT_EQ(rig.told, "up gone ");
    EXPECT_EQ(rig.bus.bus(), nullptr);
    rig.daemon.restart();
    EXPECT_TRUE(rig.hears("up gone up "));
}

TEST(SessionBusTest, FindsTheFirstBusAlsoWhenItComesLate) {
    PrivateBus daemon(sessionBus);
    daemon.end();
    SdEventLoop loop;
    bool isUp = false;
    SessionBus bus(loop);
    const auto listener = bus.listen([&](BusConnection* connection) { isUp = connection != nullptr; });
    EXPECT_EQ(bus.bus(), nullptr);
    daemon.restart();
    EXPECT_TRUE(turnUntil(loop, [&] { return isUp; }));
}

TEST(SessionBusTest, SleepsWhileItIsConnected) {
    BusRig rig;
    ASSERT_TRUE(rig.hears("up "));
    EXPECT_LT(turnsWithin(rig.loop, 1500ms), 5);
}

TEST(SessionBusTest, SleepsForGoodWithoutAnAddressOrWithNoAddressAtAll) {
    for (const char* address : {static_cast<const char*>(nullptr), "", "no address at all"}) {
        Environment environment;
        environment.unset({"XDG_RUNTIME_DIR", sessionBus});
        if (address != nullptr) environment.set(sessionBus, address);
        SdEventLoop loop;
        SessionBus bus(loop);
        EXPECT_EQ(bus.bus(), nullptr);
        EXPECT_LT(turnsWithin(loop, 1200ms), 4);
    }
}

TEST(SessionBusTest, IsLookedForBelowTheRuntimeFolderWhereTheEnvironmentNamesNone) {
    const TempFolder folder;
    const std::filesystem::path odd = folder / "a folder,=%";
    std::filesystem::create_directory(odd);
    PrivateBus daemon(sessionBus);
    const char* named = std::getenv(sessionBus);
    ASSERT_NE(named, nullptr);
    const std::string address = named;
    const std::string socket = address.substr(address.find('=') + 1, address.find(',') - address.find('=') - 1);
    std::filesystem::create_symlink(socket, odd / "bus");
    Environment environment;
    environment.unset({sessionBus});
    environment.set("XDG_RUNTIME_DIR", odd.string());
    SdEventLoop loop;
    bool isUp = false;
    SessionBus bus(loop);
    const auto listener = bus.listen([&](BusConnection* connection) { isUp = connection != nullptr; });
    EXPECT_TRUE(turnUntil(loop, [&] { return isUp; }));
}

TEST(SessionBusTest, HoldsNothingUpWhereTheBusNeverAnswers) {
    const SilentBus silent(sessionBus);
    SdEventLoop loop;
    bool isUp = false;
    SessionBus bus(loop);
    const auto listener = bus.listen([&](BusConnection* connection) { isUp = connection != nullptr; });
    EXPECT_NE(bus.bus(), nullptr);
    EXPECT_LT(turnsWithin(loop, 200ms), 10);
    EXPECT_FALSE(isUp);
}

}  // namespace
}  // namespace kovra
