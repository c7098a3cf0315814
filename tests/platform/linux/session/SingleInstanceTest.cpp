#include "BLE_kovra/platform/linux/session/SingleInstance.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "tests/fakes/FakeLog.h"
#include "tests/platform/linux/bus/SilentBus.h"
#include "tests/platform/linux/loop/Turns.h"
#include "tests/platform/linux/session/OtherProgram.h"
#include "tests/support/linux/PrivateBus.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;

constexpr const char* sessionBus = "DBUS_SESSION_BUS_ADDRESS";

// A start of the program.
class Start {
  public:
    explicit Start(SdEventLoop& loop) : bus_(loop), instance_(bus_, log_, [](const std::string&) {}) {}
    bool isSecond() const { return instance_.isSecond(); }
    const std::vector<std::string>& lines() const { return log_.lines; }

  private:
    FakeLog log_;
    SessionBus bus_;
    SingleInstance instance_;
};

const std::string nameIsTaken =
    "имя org.ble_kovra.BLEKovra на сессионной шине занято другой программой, работа продолжается без него";

TEST(SingleInstanceTest, DetectsAnotherInstanceInTheSameSession) {
    const PrivateBus bus(sessionBus);
    SdEventLoop loop;
    const Start first(loop);
    EXPECT_FALSE(first.isSecond());
    EXPECT_TRUE(first.lines().empty());
    EXPECT_TRUE(Start(loop).isSecond());
    EXPECT_TRUE(Start(loop).isSecond());
}

TEST(SingleInstanceTest, RunsWithoutTheNameIfAnotherProgramOwnsIt) {
    const PrivateBus bus(sessionBus);
    const OtherProgram other(SingleInstance::busName, {});
    SdEventLoop loop;
    const Start start(loop);
    EXPECT_FALSE(start.isSecond());
    EXPECT_EQ(start.lines(), std::vector<std::string>{"ble-kovra: " + nameIsTaken});
}

TEST(SingleInstanceTest, RunsWithoutTheNameIfItsOwnerCanBeActivatedButIsAnotherProgram) {
    const PrivateBus bus(sessionBus);
    const OtherProgram other(SingleInstance::busName, {"Activate"});
    SdEventLoop loop;
    EXPECT_FALSE(Start(loop).isSecond());
}

TEST(SingleInstanceTest, RunsWithoutTheNameIfItsOwnerRepliesInAnotherWay) {
    const PrivateBus bus(sessionBus);
    const OtherProgram other(SingleInstance::busName, {"Activate", "Version"});
    SdEventLoop loop;
    EXPECT_FALSE(Start(loop).isSecond());
}

TEST(SingleInstanceTest, NotifiesTheDesktopOnceThatItRunsWithoutTheName) {
    const PrivateBus bus(sessionBus);
    const OtherProgram owner(SingleInstance::busName, {});
    const OtherProgram desktop("org.freedesktop.Notifications", {"Notify"});
    SdEventLoop loop;
    const Start start(loop);
    EXPECT_TRUE(lookUntil(loop, [&] { return !desktop.calls().empty(); }));
    const std::string notification = R"(Notify "BLE-kovra" 0 "" "BLE-kovra" ")" + nameIsTaken + R"(" [] [] -1)";
    EXPECT_EQ(desktop.calls(), std::vector<std::string>{notification});
}

TEST(SingleInstanceTest, IsTheFirstAgainAfterTheOtherHasEnded) {
    const PrivateBus bus(sessionBus);
    SdEventLoop loop;
    EXPECT_FALSE(Start(loop).isSecond());
    EXPECT_FALSE(Start(loop).isSecond());
}

TEST(SingleInstanceTest, CountsAsTheFirstWithoutASessionBus) {
    ::setenv(sessionBus, "unix:path=/nonexistent/bus", 1);
    SdEventLoop loop;
    EXPECT_FALSE(Start(loop).isSecond());
    ::setenv(sessionBus, "no address at all", 1);
    EXPECT_FALSE(Start(loop).isSecond());
    ::unsetenv(sessionBus);
}

TEST(SingleInstanceTest, CountsAsTheFirstIfTheBusNeverAnswers) {
    const SilentBus silent(sessionBus);
    SdEventLoop loop;
    EXPECT_FALSE(Start(loop).isSecond());
}

TEST(SingleInstanceTest, LetsTheLoopSleepAfterTheBusHasDied) {
    PrivateBus bus(sessionBus);
    SdEventLoop loop;
    const Start instance(loop);
    bus.end();
    bool done = false;
    int turns = 0;
    loop.asyncAfter(200ms, [&] { done = true; });
    loop.runUntil([&] {
        ++turns;
        return done;
    });
    EXPECT_LT(turns, 30);  // the disconnection causes a few turns; a loop that spins makes many thousands
}

TEST(SingleInstanceTest, OwnsTheNameAgainAfterTheBusHasRestarted) {
    PrivateBus bus(sessionBus);
    SdEventLoop loop;
    const Start first(loop);
    bus.restart();
    EXPECT_TRUE(turnUntil(loop, [&] { return Start(loop).isSecond(); }));
}

TEST(SingleInstanceTest, KeepsRunningIfAnotherTookTheNameWhileTheBusRestarted) {
    PrivateBus bus(sessionBus);
    SdEventLoop loop;
    FakeLog log;
    SessionBus connection(loop);
    const SingleInstance first(connection, log, [](const std::string&) {});
    bool isConnected = false;
    const auto listener = connection.listen([&](BusConnection* up) { isConnected = up != nullptr; });
    ASSERT_TRUE(turnUntil(loop, [&] { return isConnected; }));
    bus.end();
    ASSERT_TRUE(turnUntil(loop, [&] { return !isConnected; }));
    bus.restart();
    SdEventLoop loopOfAnother;
    const Start another(loopOfAnother);
    EXPECT_FALSE(another.isSecond());
    ASSERT_TRUE(turnUntil(loop, [&] { return isConnected; }));
    // Once the bus has answered this call, it has also answered the request for the name.
    bool isAnswered = false;
    const auto answered = [](sd_bus_message*, void* context, sd_bus_error*) {
        *static_cast<bool*>(context) = true;
        return 0;
    };
    sd_bus_call_method_async(connection.bus(), nullptr, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                             "org.freedesktop.DBus", "GetId", answered, &isAnswered, nullptr);
    EXPECT_TRUE(turnUntil(loop, [&] { return isAnswered; }));
    EXPECT_TRUE(isConnected);
    EXPECT_FALSE(first.isSecond());
}

}  // namespace
}  // namespace kovra
