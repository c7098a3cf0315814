#include "BLE_kovra/platform/linux/bus/SystemBus.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string>

#include "tests/platform/linux/loop/Turns.h"
#include "tests/support/Environment.h"
#include "tests/support/linux/PrivateBus.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;

constexpr const char* systemBus = "DBUS_SYSTEM_BUS_ADDRESS";

TEST(SystemBusTest, ReconnectsWhenTheBusRestarts) {
    PrivateBus daemon(systemBus);
    SdEventLoop loop;
    SystemBus bus(loop);
    std::string notifications;
    const auto listener = bus.listen([&](BusConnection* connection) { notifications += connection ? "up " : "lost "; });
    ASSERT_TRUE(turnUntil(loop, [&] { return notifications == "up "; }));
    daemon.end();
    ASSERT_TRUE(turnUntil(loop, [&] { return notifications == "up lost "; }));
    turnsWithin(loop, 1200ms);  // the first retry fails one second after the loss
    daemon.restart();
    EXPECT_TRUE(turnUntil(loop, [&] { return notifications == "up lost up "; }));
}

TEST(SystemBusTest, RetriesABusThatRefusesTheFirstConnection) {
    const TempFolder folder;
    Environment environment;
    environment.set(systemBus, "unix:path=" + folder / "bus");
    sockaddr_un address{AF_UNIX, {}};
    std::ranges::copy(folder / "bus", address.sun_path);
    // A socket that nobody listens to refuses connections.
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ASSERT_EQ(::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    SdEventLoop loop;
    SystemBus bus(loop);
    EXPECT_EQ(bus.bus(), nullptr);
    EXPECT_EQ(::listen(socket, 1), 0);
    EXPECT_TRUE(turnUntil(loop, [&] { return bus.bus() != nullptr; }));
    ::close(socket);
}

TEST(SystemBusTest, DoesNotWakeWhereThereIsNoBusAtTheStart) {
    const TempFolder folder;
    Environment environment;
    environment.set(systemBus, "unix:path=" + folder / "bus");
    SdEventLoop loop;
    const SystemBus bus(loop);
    EXPECT_EQ(bus.bus(), nullptr);
    EXPECT_LT(turnsWithin(loop, 1200ms), 4);
}

}  // namespace
}  // namespace kovra
