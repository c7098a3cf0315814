#include "BLE_kovra/platform/linux/session/SingleInstance.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "BLE_kovra/platform/linux/session/InstanceLock.h"
#include "tests/fakes/FakeLog.h"
#include "tests/platform/linux/bus/SilentBus.h"
#include "tests/platform/linux/loop/Turns.h"
#include "tests/platform/linux/session/OtherProgram.h"
#include "tests/support/linux/PrivateBus.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;

constexpr const char* sessionBus = "DBUS_SESSION_BUS_ADDRESS";

// A start of the program, by default without a lock.
class Start {
  public:
    explicit Start(SdEventLoop& loop, const std::string& lock = "")
        : lock_(lock),
          bus_(loop),
          instance_(
              bus_, lock_, log_, [this](const std::string&) { ++furtherStarts_; },
              [](ApplicationAction, const std::string&) {}) {}
    bool isSecond() const { return instance_.isSecond(); }
    const std::vector<std::string>& lines() const { return log_.lines; }
    int furtherStarts() const { return furtherStarts_; }

  private:
    const InstanceLock lock_;
    FakeLog log_;
    int furtherStarts_ = 0;
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

// In versions without the method Version, this program's object has only this method.
TEST(SingleInstanceTest, DetectsAnInstanceOfAnOlderVersion) {
    const std::array<sd_bus_vtable, 3> table{{
        SD_BUS_VTABLE_START(0),
        SD_BUS_METHOD_WITH_ARGS("Activate", SD_BUS_ARGS("a{sv}", platform_data), SD_BUS_NO_RESULT,
                                OtherProgram::replyNothing, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_VTABLE_END,
    }};
    const PrivateBus bus(sessionBus);
    const OtherProgram older(SingleInstance::busName, {}, table.data());
    SdEventLoop loop;
    const Start start(loop);
    EXPECT_TRUE(start.isSecond());
    EXPECT_TRUE(start.lines().empty());
    const auto calls = older.calls();
    EXPECT_EQ(std::ranges::count(calls, "Activate []"), 1);
}

// Toolkits give these methods to every application that can be activated over the bus.
TEST(SingleInstanceTest, RunsWithoutTheNameIfItsOwnerIsAnotherApplicationOfItsDesktop) {
    const std::array<sd_bus_vtable, 4> table{{
        SD_BUS_VTABLE_START(0),
        SD_BUS_METHOD_WITH_ARGS("Activate", SD_BUS_ARGS("a{sv}", platform_data), SD_BUS_NO_RESULT,
                                OtherProgram::replyNothing, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD_WITH_ARGS("Open", SD_BUS_ARGS("as", uris, "a{sv}", platform_data), SD_BUS_NO_RESULT,
                                OtherProgram::replyNothing, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_VTABLE_END,
    }};
    const PrivateBus bus(sessionBus);
    const OtherProgram other(SingleInstance::busName, {}, table.data());
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

// The lock detects an instance that cannot be reached on the session bus. Otherwise both instances would write the
// flag.
class SingleInstanceLockTest : public testing::Test {
  protected:
    using Lines = std::vector<std::string>;

    const Lines outOfReach_{"ble-kovra: программа уже запущена этим пользователем, но на сессионной шине не отвечает"};
    const TempFolder folder_;
    const std::string lock_ = folder_ / "lock";
    SdEventLoop loop_;
};

TEST_F(SingleInstanceLockTest, DetectsAnotherInstanceOnAnotherBus) {
    auto bus = std::make_unique<PrivateBus>(sessionBus);
    const Start first(loop_, lock_);
    EXPECT_FALSE(first.isSecond());
    const PrivateBus another(sessionBus);
    const Start second(loop_, lock_);
    EXPECT_TRUE(second.isSecond());
    EXPECT_EQ(second.lines(), outOfReach_);
}

TEST_F(SingleInstanceLockTest, DetectsAnotherInstanceWithoutABus) {
    ::setenv(sessionBus, "unix:path=/nonexistent/bus", 1);
    const Start first(loop_, lock_);
    EXPECT_FALSE(first.isSecond());
    EXPECT_EQ(first.lines(), Lines());
    const Start second(loop_, lock_);
    EXPECT_TRUE(second.isSecond());
    EXPECT_EQ(second.lines(), outOfReach_);
    ::unsetenv(sessionBus);
}

TEST_F(SingleInstanceLockTest, AsksAnotherInstanceOnTheSameBusToComeToTheFront) {
    const PrivateBus bus(sessionBus);
    const Start first(loop_, lock_);
    std::atomic<bool> hasEnded = false;
    std::thread another([&] {
        SdEventLoop loop;
        const Start second(loop, lock_);
        EXPECT_TRUE(second.isSecond());
        EXPECT_EQ(second.lines(), Lines());
        hasEnded = true;
    });
    EXPECT_TRUE(lookUntil(loop_, [&] { return hasEnded && first.furtherStarts() == 1; }));
    another.join();
}

// The kernel may take a moment to end a process that was killed. Until then the process holds the lock, without a name.
TEST_F(SingleInstanceLockTest, TakesThePlaceOfAnInstanceThatIsBeingKilled) {
    const PrivateBus bus(sessionBus);
    auto killed = std::make_unique<InstanceLock>(lock_);
    std::thread end([&] {
        std::this_thread::sleep_for(200ms);
        killed.reset();
    });
    const Start next(loop_, lock_);
    end.join();
    EXPECT_FALSE(next.isSecond());
    EXPECT_EQ(next.lines(), Lines());
    EXPECT_EQ(InstanceLock(lock_).state(), InstanceLock::State::heldElsewhere);
}

TEST_F(SingleInstanceLockTest, IsNotTakenFromAnInstanceThatRunsWithoutItsName) {
    const PrivateBus bus(sessionBus);
    const OtherProgram other(SingleInstance::busName, {});
    const Start first(loop_, lock_);
    EXPECT_FALSE(first.isSecond());
    const Start second(loop_, lock_);
    EXPECT_TRUE(second.isSecond());
    EXPECT_EQ(second.lines(), outOfReach_);
}

TEST_F(SingleInstanceLockTest, DecidesIfTheOwnerOfTheNameIsSilent) {
    const PrivateBus bus(sessionBus);
    const Start silent(loop_);  // owns the name, and its loop does not run
    const Start start(loop_, lock_);
    EXPECT_FALSE(start.isSecond());
    EXPECT_EQ(start.lines(), Lines{"ble-kovra: " + nameIsTaken});
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
    const InstanceLock noLock("");
    SessionBus connection(loop);
    const SingleInstance first(
        connection, noLock, log, [](const std::string&) {}, [](ApplicationAction, const std::string&) {});
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
