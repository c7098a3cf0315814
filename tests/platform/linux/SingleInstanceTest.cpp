#include "BLE_kovra/platform/linux/SingleInstance.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "tests/platform/linux/PrivateBus.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;

constexpr const char* sessionBus = "DBUS_SESSION_BUS_ADDRESS";

TEST(SingleInstance, SeesThatAnotherRunsInTheSameSession) {
    const PrivateBus bus(sessionBus);
    SdEventLoop loop;
    const SingleInstance first(loop);
    EXPECT_FALSE(first.isSecond());
    EXPECT_TRUE(SingleInstance(loop).isSecond());
    EXPECT_TRUE(SingleInstance(loop).isSecond());
}

TEST(SingleInstance, IsTheFirstAgainOnceTheOtherHasGone) {
    const PrivateBus bus(sessionBus);
    SdEventLoop loop;
    EXPECT_FALSE(SingleInstance(loop).isSecond());
    EXPECT_FALSE(SingleInstance(loop).isSecond());
}

TEST(SingleInstance, CountsAsTheFirstWithoutASessionBus) {
    ::setenv(sessionBus, "unix:path=/nonexistent/bus", 1);
    SdEventLoop loop;
    EXPECT_FALSE(SingleInstance(loop).isSecond());
    ::setenv(sessionBus, "no address at all", 1);
    EXPECT_FALSE(SingleInstance(loop).isSecond());
    ::unsetenv(sessionBus);
}

TEST(SingleInstance, CountsAsTheFirstWhereTheBusNeverAnswers) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string name = "kovra-test-silent-bus-" + std::to_string(::getpid());
    std::memcpy(address.sun_path + 1, name.data(), name.size());
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
    const int listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ASSERT_EQ(::bind(listener, reinterpret_cast<const sockaddr*>(&address), length), 0);
    ASSERT_EQ(::listen(listener, 1), 0);
    ::setenv(sessionBus, ("unix:abstract=" + name).c_str(), 1);
    SdEventLoop loop;
    EXPECT_FALSE(SingleInstance(loop).isSecond());
    ::unsetenv(sessionBus);
    ::close(listener);
}

TEST(SingleInstance, LetsTheLoopGoOnQuietlyWhenTheBusDies) {
    PrivateBus bus(sessionBus);
    SdEventLoop loop;
    const SingleInstance instance(loop);
    bus.end();
    bool done = false;
    int turns = 0;
    loop.asyncAfter(200ms, [&] { done = true; });
    loop.runUntil([&] {
        ++turns;
        return done;
    });
    EXPECT_LT(turns, 30);  // some for the farewell, then sleep: a loop that spins turns many thousand times
}

}  // namespace
}  // namespace kovra
