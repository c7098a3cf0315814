#include "BLE_kovra/platform/linux/session/LogindSession.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>

#include "tests/platform/linux/bus/Forger.h"
#include "tests/support/linux/PrivateBus.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;

// A substitute for the login manager on a bus. It emits the login manager's documented signals.
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
        emitFrom("", "org.freedesktop.login1.Manager", signal, types, values...);
    }
    // Emits a signal with changed properties of a session. `session` is the session's name in object paths.
    template <typename... Values>
    void emitChange(const std::string& session, const char* types, Values... values) {
        emitFrom("/session/" + session, "org.freedesktop.DBus.Properties", "PropertiesChanged", types, values...);
    }
    void emitActive(const std::string& session, bool isActive) {
        emitChange(session, "sa{sv}as", "org.freedesktop.login1.Session", 1, "Active", "b", isActive ? 1 : 0, 0);
    }

  private:
    template <typename... Values>
    void emitFrom(const std::string& object, const char* interface, const char* signal, const char* types,
                  Values... values) {
        const std::string path = "/org/freedesktop/login1" + object;
        EXPECT_GE(sd_bus_emit_signal(bus_.get(), path.c_str(), interface, signal, types, values...), 0);
        EXPECT_GE(sd_bus_flush(bus_.get()), 0);
    }

    BusHandle bus_;
};

// A session, and a record of its events.
struct SessionRig {
    PrivateBus bus{"DBUS_SYSTEM_BUS_ADDRESS"};
    LoginManager manager;
    SdEventLoop loop;
    SystemBus machine{loop};
    std::string received;
    bool hasFile = false;
    LogindSession session{machine, "c2", recording(""), [this](const std::string&) { return hasFile; }};

    SessionRig() { waitUntilSubscribed(); }
    void waitUntilSubscribed() {
        // The bus installs the matches some time after the program requests them, and the match for the end of the
        // session last. The signal is therefore repeated.
        for (int tries = 0; received.empty() && tries < 500; ++tries) {
            sessionRemoved("c2");
            turnUntil([this] { return !received.empty(); }, 20ms);
        }
        static_cast<void>(eventsReceived());
    }
    void endBus() {
        bus.end();
        turnUntil([this] { return machine.bus() == nullptr; }, 20s);
    }
    // Starts the bus again. Returns the first event that is received without a signal.
    std::string firstEventOfARestartedBus() {
        bus.restart();
        manager = LoginManager();
        turnUntil([this] { return !received.empty(); }, 20s);
        return std::exchange(received, {});
    }
    LogindSession::Events recording(const std::string& who) {
        return {.removed = [this, who] { received += who + "removed "; },
                .activated = [this, who] { received += who + "activated "; },
                .resumed = [this, who] { received += who + "resumed "; }};
    }
    void sessionRemoved(const std::string& id) {
        manager.emit("SessionRemoved", "so", id.c_str(), ("/org/freedesktop/login1/session/" + id).c_str());
    }
    // Returns the events that were received since the last call. Emits two more signals and waits for them. Signals of
    // one sender arrive in order, so all earlier signals have then arrived, too.
    std::string eventsReceived() {
        const std::string last = "resumed removed ";
        manager.emit("PrepareForSleep", "b", 0);
        sessionRemoved("c2");
        turnUntil([&] { return received.ends_with(last); }, 20s);
        std::string all = std::exchange(received, {});
        return all.ends_with(last) ? all.substr(0, all.size() - last.size()) : "the last ones are missing: " + all;
    }
    void turnUntil(const std::function<bool()>& condition, std::chrono::nanoseconds atMost) {
        bool isOver = false;
        const auto task = loop.asyncAfter(atMost, [&] { isOver = true; });
        loop.runUntil([&] { return isOver || condition(); });
        task->cancel();
    }
};

TEST(LogindSessionTest, ReportsTheEndOfItsSession) {
    SessionRig rig;
    rig.sessionRemoved("c2");
    EXPECT_EQ(rig.eventsReceived(), "removed ");
}

TEST(LogindSessionTest, DoesNotBelieveThatItsSessionHasEndedWhileTheLoginManagerHasAFileOfIt) {
    SessionRig rig;
    rig.hasFile = true;
    rig.sessionRemoved("c2");
    rig.manager.emit("PrepareForSleep", "b", 0);
    rig.turnUntil([&] { return rig.received == "resumed "; }, 20s);
    EXPECT_EQ(rig.received, "resumed ");
}

TEST(LogindSessionTest, IgnoresSignalsThatAnotherClientForges) {
    SessionRig rig;
    Forger forger(Forger::Bus::system);
    const std::string program = Forger::nameOf(rig.machine.bus());
    const char* manager = "org.freedesktop.login1.Manager";
    forger.send(program, "/org/freedesktop/login1", manager, "SessionRemoved", "so", "c2", "/");
    forger.send(program, "/org/freedesktop/login1", manager, "PrepareForSleep", "b", 0);
    forger.send(program, "/org/freedesktop/login1/session/c2", "org.freedesktop.DBus.Properties", "PropertiesChanged",
                "sa{sv}as", "org.freedesktop.login1.Session", 1, "Active", "b", 1, 0);
    EXPECT_EQ(rig.eventsReceived(), "");
}

TEST(LogindSessionTest, IgnoresTheEndOfAnotherSession) {
    SessionRig rig;
    for (const char* other : {"c22", "c", "C2"}) rig.sessionRemoved(other);
    EXPECT_EQ(rig.eventsReceived(), "");
}

TEST(LogindSessionTest, ReportsThatTheMachineHasWokenButNotThatItFallsAsleep) {
    SessionRig rig;
    rig.manager.emit("PrepareForSleep", "b", 1);
    EXPECT_EQ(rig.eventsReceived(), "");
    rig.manager.emit("PrepareForSleep", "b", 0);
    EXPECT_EQ(rig.eventsReceived(), "resumed ");
}

TEST(LogindSessionTest, ReportsThatItsSessionIsActiveButNotThatItIsInactive) {
    SessionRig rig;
    rig.manager.emitActive("c2", false);
    EXPECT_EQ(rig.eventsReceived(), "");
    rig.manager.emitActive("c2", true);
    EXPECT_EQ(rig.eventsReceived(), "activated ");
    rig.manager.emitActive("c2", true);
    EXPECT_EQ(rig.eventsReceived(), "activated ");
}

TEST(LogindSessionTest, FindsTheActiveStateAmongOtherProperties) {
    SessionRig rig;
    const char* interface = "org.freedesktop.login1.Session";
    rig.manager.emitChange("c2", "sa{sv}as", interface, 3, "State", "s", "active", "Active", "b", 1, "IdleSinceHint",
                           "t", std::uint64_t{7}, 1, "LockedHint");
    EXPECT_EQ(rig.eventsReceived(), "activated ");
    rig.manager.emitChange("c2", "sa{sv}as", interface, 2, "IdleHint", "b", 1, "State", "s", "Active", 0);
    rig.manager.emitChange("c2", "sa{sv}as", "org.freedesktop.login1.Seat", 1, "Active", "b", 1, 0);
    EXPECT_EQ(rig.eventsReceived(), "");
}

TEST(LogindSessionTest, IgnoresThatAnotherSessionIsActive) {
    SessionRig rig;
    for (const char* other : {"c22", "c", "C2", "self", "auto"}) rig.manager.emitActive(other, true);
    EXPECT_EQ(rig.eventsReceived(), "");
}

// In an object path, the session name "2" is escaped as "_32".
TEST(LogindSessionTest, RecognizesASessionWhoseNameIsANumber) {
    SessionRig rig;
    const LogindSession numbered(rig.machine, "2", rig.recording("2 "));
    for (int tries = 0; rig.received.empty() && tries < 500; ++tries) {
        rig.manager.emitActive("_32", true);
        rig.turnUntil([&] { return !rig.received.empty(); }, 20ms);
    }
    EXPECT_TRUE(rig.received.starts_with("2 activated ")) << rig.received;
}

TEST(LogindSessionTest, IgnoresSignalsOfTheWrongShape) {
    SessionRig rig;
    const char* interface = "org.freedesktop.login1.Session";
    rig.manager.emitChange("c2", "s", interface);
    rig.manager.emitChange("c2", "sas", interface, 1, "Active");
    rig.manager.emitChange("c2", "sa{sv}as", interface, 1, "Active", "s", "true", 0);
    rig.manager.emitChange("c2", "sa{sv}as", interface, 1, "Active", "u", 1U, 0);
    rig.manager.emitChange("c2", "sa{ss}as", interface, 1, "Active", "true", 0);
    rig.manager.emit("SessionRemoved", "u", 2U);
    rig.manager.emit("PrepareForSleep", "s", "false");
    EXPECT_EQ(rig.eventsReceived(), "");
}

TEST(LogindSessionTest, ReportsThatTheMachineHasWokenOnceALostConnectionIsThereAgain) {
    for (const bool hasFile : {false, true}) {
        SessionRig rig;
        rig.hasFile = hasFile;
        rig.endBus();
        EXPECT_EQ(rig.firstEventOfARestartedBus(), "resumed ");
    }
}

TEST(LogindSessionTest, ReportsAnEndOfItsSessionThatALostConnectionHasHidden) {
    SessionRig rig;
    rig.hasFile = true;
    rig.endBus();
    rig.hasFile = false;
    EXPECT_EQ(rig.firstEventOfARestartedBus(), "removed ");
}

TEST(LogindSessionTest, ReceivesSignalsAgainAfterALostConnection) {
    SessionRig rig;
    rig.endBus();
    static_cast<void>(rig.firstEventOfARestartedBus());
    rig.waitUntilSubscribed();
    rig.manager.emitActive("c2", true);
    EXPECT_EQ(rig.eventsReceived(), "activated ");
}

TEST(LogindSessionTest, StaysSilentWithoutASystemBus) {
    ::setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus", 1);
    SdEventLoop loop;
    SystemBus machine(loop);
    const LogindSession session(machine, "c2", {});
    ::unsetenv("DBUS_SYSTEM_BUS_ADDRESS");
    bool done = false;
    loop.asyncAfter(10ms, [&] { done = true; });
    loop.runUntil([&] { return done; });
    EXPECT_TRUE(done);
}

}  // namespace
}  // namespace kovra
