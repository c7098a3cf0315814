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

// A session bus, and a record of the notifications: "up " and "lost ".
struct BusRig {
    PrivateBus daemon{sessionBus};
    SdEventLoop loop;
    std::string notifications;
    SessionBus bus{loop};
    BusToken listener = listen();

    BusToken listen() {
        return bus.listen([this](BusConnection* connection) {
            EXPECT_EQ(connection, bus.connection());
            if (connection != nullptr) {
                EXPECT_GT(sd_bus_is_ready(connection->bus()), 0);
            }
            notifications += connection != nullptr ? "up " : "lost ";
        });
    }
    bool isNotified(const std::string& words) {
        return turnUntil(loop, [&] { return notifications == words; });
    }
};

TEST(SessionBusTest, NotifiesItsListenerFromTheQueueOnceConnected) {
    BusRig rig;
    EXPECT_EQ(rig.notifications, "");
    EXPECT_TRUE(rig.isNotified("up "));
}

TEST(SessionBusTest, NotifiesALateListenerInTheNextTurn) {
    BusRig rig;
    ASSERT_TRUE(rig.isNotified("up "));
    const auto late = rig.listen();
    EXPECT_EQ(rig.notifications, "up ");
    EXPECT_TRUE(rig.isNotified("up up "));
    EXPECT_LT(turnsWithin(rig.loop, 50ms), 10);
    EXPECT_EQ(rig.notifications, "up up ");
}

TEST(SessionBusTest, DoesNotNotifyARemovedListener) {
    BusRig rig;
    ASSERT_TRUE(rig.isNotified("up "));
    auto second = rig.listen();
    second.reset();
    rig.listener.reset();
    rig.daemon.end();
    EXPECT_TRUE(turnUntil(rig.loop, [&] { return rig.bus.bus() == nullptr; }));
    EXPECT_EQ(rig.notifications, "up ");
}

TEST(SessionBusTest, ReconnectsWhenTheBusRestartsAtItsAddress) {
    BusRig rig;
    ASSERT_TRUE(rig.isNotified("up "));
    for (std::string all = "up "; all.size() < 20;) {
        rig.daemon.end();
        all += "lost ";
        ASSERT_TRUE(rig.isNotified(all));
        rig.daemon.restart();
        all += "up ";
        ASSERT_TRUE(rig.isNotified(all));
    }
}

TEST(SessionBusTest, RetriesUntilTheBusIsRunning) {
    BusRig rig;
    ASSERT_TRUE(rig.isNotified("up "));
    rig.daemon.end();
    // The first retry fails one second after the loss. The second one would follow two seconds later.
    EXPECT_LT(turnsWithin(rig.loop, 1500ms), 50);
    EXPECT_EQ(rig.notifications, "up lost ");
    EXPECT_EQ(rig.bus.bus(), nullptr);
    rig.daemon.restart();
    EXPECT_TRUE(rig.isNotified("up lost up "));
}

TEST(SessionBusTest, ConnectsToABusThatStartsLate) {
    PrivateBus daemon(sessionBus);
    daemon.end();
    SdEventLoop loop;
    bool isConnected = false;
    SessionBus bus(loop);
    const auto listener = bus.listen([&](BusConnection* connection) { isConnected = connection != nullptr; });
    EXPECT_EQ(bus.bus(), nullptr);
    daemon.restart();
    EXPECT_TRUE(turnUntil(loop, [&] { return isConnected; }));
}

TEST(SessionBusTest, SleepsWhileItIsConnected) {
    BusRig rig;
    ASSERT_TRUE(rig.isNotified("up "));
    EXPECT_LT(turnsWithin(rig.loop, 1500ms), 5);
}

TEST(SessionBusTest, StaysAsleepWithoutAValidAddress) {
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

TEST(SessionBusTest, UsesTheSocketInTheRuntimeFolderIfTheEnvironmentNamesNoBus) {
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
    bool isConnected = false;
    SessionBus bus(loop);
    const auto listener = bus.listen([&](BusConnection* connection) { isConnected = connection != nullptr; });
    EXPECT_TRUE(turnUntil(loop, [&] { return isConnected; }));
}

TEST(SessionBusTest, DoesNotBlockIfTheBusNeverAnswers) {
    const SilentBus silent(sessionBus);
    SdEventLoop loop;
    bool isConnected = false;
    SessionBus bus(loop);
    const auto listener = bus.listen([&](BusConnection* connection) { isConnected = connection != nullptr; });
    EXPECT_NE(bus.bus(), nullptr);
    EXPECT_LT(turnsWithin(loop, 200ms), 10);
    EXPECT_FALSE(isConnected);
}

}  // namespace
}  // namespace kovra
