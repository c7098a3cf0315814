#include "BLE_kovra/platform/linux/LogindSession.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/platform/linux/PrivateBus.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;

// The login manager's place on a bus, from where it speaks its published signals.
class LoginManager {
  public:
    LoginManager() {
        sd_bus* bus = nullptr;
        EXPECT_GE(sd_bus_open_system(&bus), 0);
        bus_.reset(bus);
        EXPECT_GE(sd_bus_request_name(bus, "org.freedesktop.login1", 0), 0);
    }
    template <typename... Values>
    void emit(const char* signal, const char* types, Values... values) {
        EXPECT_GE(sd_bus_emit_signal(bus_.get(), "/org/freedesktop/login1", "org.freedesktop.login1.Manager", signal,
                                     types, values...),
                  0);
        EXPECT_GE(sd_bus_flush(bus_.get()), 0);
    }

  private:
    BusHandle bus_;
};

struct SessionRig {
    PrivateBus bus{"DBUS_SYSTEM_BUS_ADDRESS"};
    LoginManager manager;
    SdEventLoop loop;
    LogindSession session{loop, "c2"};
    std::string heard;

    SessionRig() {
        session.onRemoved = [this] { heard += "removed "; };
        session.onResumed = [this] { heard += "resumed "; };
        let(100ms);  // the bus learns what is listened to
    }
    void let(std::chrono::milliseconds duration) {
        bool done = false;
        loop.asyncAfter(duration, [&] { done = true; });
        loop.runUntil([&] { return done; });
    }
};

TEST(LogindSession, HearsThatItsSessionHasEnded) {
    SessionRig rig;
    rig.manager.emit("SessionRemoved", "so", "c2", "/org/freedesktop/login1/session/c2");
    rig.let(100ms);
    EXPECT_EQ(rig.heard, "removed ");
}

TEST(LogindSession, IgnoresTheEndOfAnotherSession) {
    SessionRig rig;
    rig.manager.emit("SessionRemoved", "so", "c22", "/org/freedesktop/login1/session/c22");
    rig.let(100ms);
    EXPECT_EQ(rig.heard, "");
}

TEST(LogindSession, HearsThatTheMachineIsAwakeAgainNotThatItFallsAsleep) {
    SessionRig rig;
    rig.manager.emit("PrepareForSleep", "b", 1);
    rig.let(100ms);
    EXPECT_EQ(rig.heard, "");
    rig.manager.emit("PrepareForSleep", "b", 0);
    rig.let(100ms);
    EXPECT_EQ(rig.heard, "resumed ");
}

TEST(LogindSession, IgnoresSignalsOfTheWrongShape) {
    SessionRig rig;
    rig.manager.emit("SessionRemoved", "u", 2U);
    rig.manager.emit("PrepareForSleep", "s", "false");
    rig.let(100ms);
    EXPECT_EQ(rig.heard, "");
}

TEST(LogindSession, StaysSilentWithoutASystemBus) {
    ::setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus", 1);
    SdEventLoop loop;
    const LogindSession session(loop, "c2");
    ::unsetenv("DBUS_SYSTEM_BUS_ADDRESS");
    bool done = false;
    loop.asyncAfter(10ms, [&] { done = true; });
    loop.runUntil([&] { return done; });
    EXPECT_TRUE(done);
}

}  // namespace
}  // namespace kovra
