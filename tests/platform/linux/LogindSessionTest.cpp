#include "BLE_kovra/platform/linux/LogindSession.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>

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

// Signals of one sender arrive in their order: what was going to be heard has been heard once two that come last have.
struct SessionRig {
    PrivateBus bus{"DBUS_SYSTEM_BUS_ADDRESS"};
    LoginManager manager;
    SdEventLoop loop;
    LogindSession session{loop, "c2"};
    std::string heard;

    SessionRig() {
        session.onRemoved = [this] { heard += "removed "; };
        session.onResumed = [this] { heard += "resumed "; };
        // The bus learns a moment later what is listened to, the session's end last.
        for (int tries = 0; heard.empty() && tries < 500; ++tries) {
            sessionRemoved("c2");
            turnUntil([this] { return !heard.empty(); }, 20ms);
        }
        static_cast<void>(heardInTheEnd());
    }
    void sessionRemoved(const std::string& id) {
        manager.emit("SessionRemoved", "so", id.c_str(), ("/org/freedesktop/login1/session/" + id).c_str());
    }
    // What was heard since the last call.
    std::string heardInTheEnd() {
        const std::string last = "resumed removed ";
        manager.emit("PrepareForSleep", "b", 0);
        sessionRemoved("c2");
        turnUntil([&] { return heard.ends_with(last); }, 20s);
        std::string all = std::exchange(heard, {});
        return all.ends_with(last) ? all.substr(0, all.size() - last.size()) : "not in the end: " + all;
    }

  private:
    void turnUntil(const std::function<bool()>& condition, std::chrono::nanoseconds atMost) {
        bool isOver = false;
        const auto task = loop.asyncAfter(atMost, [&] { isOver = true; });
        loop.runUntil([&] { return isOver || condition(); });
        task->cancel();
    }
};

TEST(LogindSession, HearsThatItsSessionHasEnded) {
    SessionRig rig;
    rig.sessionRemoved("c2");
    EXPECT_EQ(rig.heardInTheEnd(), "removed ");
}

TEST(LogindSession, IgnoresTheEndOfAnotherSession) {
    SessionRig rig;
    for (const char* other : {"c22", "c", "C2"}) rig.sessionRemoved(other);
    EXPECT_EQ(rig.heardInTheEnd(), "");
}

TEST(LogindSession, HearsThatTheMachineIsAwakeAgainNotThatItFallsAsleep) {
    SessionRig rig;
    rig.manager.emit("PrepareForSleep", "b", 1);
    EXPECT_EQ(rig.heardInTheEnd(), "");
    rig.manager.emit("PrepareForSleep", "b", 0);
    EXPECT_EQ(rig.heardInTheEnd(), "resumed ");
}

TEST(LogindSession, IgnoresSignalsOfTheWrongShape) {
    SessionRig rig;
    rig.manager.emit("SessionRemoved", "u", 2U);
    rig.manager.emit("PrepareForSleep", "s", "false");
    EXPECT_EQ(rig.heardInTheEnd(), "");
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
