#include "BLE_kovra/platform/linux/session/DBusActivation.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "BLE_kovra/platform/linux/bus/BusMessage.h"
#include "BLE_kovra/platform/linux/desktop/BuildBundle.h"
#include "BLE_kovra/platform/linux/session/InstanceLock.h"
#include "BLE_kovra/platform/linux/session/SingleInstance.h"
#include "tests/fakes/FakeLog.h"
#include "tests/platform/linux/bus/BusText.h"
#include "tests/platform/linux/loop/Turns.h"
#include "tests/support/Environment.h"
#include "tests/support/linux/PrivateBus.h"

namespace kovra {
namespace {

// The first instance, and another program on its session bus.
class DBusActivationTest : public testing::Test {
  protected:
    DBusActivationTest() {
        environment_.unset({"XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID", "DISPLAY"});
        environment_.set("WAYLAND_DISPLAY", "wayland-0");
        sd_bus* bus = nullptr;
        EXPECT_GE(sd_bus_open_user(&bus), 0);
        other_.reset(bus);
        EXPECT_GE(sd_bus_attach_event(bus, loop_.event(), SD_EVENT_PRIORITY_NORMAL), 0);
    }

    using Write = std::function<void(BusWriter&)>;
    // Calls a method of the first instance. `write` writes the arguments. Returns the reply as text, or "error NAME".
    std::string call(const char* member, const Write& write, const char* object = "/org/ble_kovra/BLEKovra",
                     const char* interface = "org.freedesktop.Application") {
        sd_bus_message* made = nullptr;
        EXPECT_GE(
            sd_bus_message_new_method_call(other_.get(), &made, "org.ble_kovra.BLEKovra", object, interface, member),
            0);
        const BusMessage message(made);
        BusWriter writer(made);
        write(writer);
        EXPECT_GE(writer.result(), 0);
        std::optional<std::string> answer;
        const auto answered = [](sd_bus_message* reply, void* context, sd_bus_error*) {
            const bool isError = sd_bus_message_is_method_error(reply, nullptr) > 0;
            *static_cast<std::optional<std::string>*>(context) =
                isError ? "error " + std::string(sd_bus_message_get_error(reply)->name) : textOf(reply);
            return 0;
        };
        sd_bus_slot* slot = nullptr;
        EXPECT_GE(sd_bus_call_async(other_.get(), &slot, made, answered, &answer, 0), 0);
        const BusSlot pending(slot);
        EXPECT_TRUE(turnUntil(loop_, [&] { return answer.has_value(); }));
        return answer.value_or("no answer");
    }
    static bool isSecondStart() {
        SdEventLoop loop;
        FakeLog log;
        SessionBus bus(loop);
        const bool isSecond =
            SingleInstance(
                bus, InstanceLock(""), log, [](const std::string&) {}, [](ApplicationAction, const std::string&) {})
                .isSecond();
        EXPECT_EQ(log.lines, std::vector<std::string>());
        return isSecond;
    }
    // Starts the program a second time, in a thread. The second start waits for a reply of the first instance, whose
    // loop must run meanwhile.
    void startAgain() {
        std::atomic<bool> hasEnded = false;
        std::thread start([&] {
            EXPECT_TRUE(isSecondStart());
            hasEnded = true;
        });
        EXPECT_TRUE(lookUntil(loop_, [&] { return hasEnded.load(); }));
        start.join();
    }
    bool isActivated(std::size_t starts) {
        return turnUntil(loop_, [&] { return tokens_.size() == starts; });
    }
    static void noData(BusWriter& writer) { writer.openArray("{sv}").close(); }

    Environment environment_;
    PrivateBus daemon_{"DBUS_SESSION_BUS_ADDRESS"};
    SdEventLoop loop_;
    SessionBus bus_{loop_};
    std::vector<std::string> tokens_;
    std::vector<std::pair<ApplicationAction, std::string>> requests_;
    bool wasInDispatch_ = false;
    FakeLog log_;
    const InstanceLock noLock_{""};
    SingleInstance first_{bus_, noLock_, log_, [this](const std::string& token) { tokens_.push_back(token); },
                          [this](ApplicationAction action, const std::string& token) {
                              wasInDispatch_ = wasInDispatch_ || sd_event_get_state(loop_.event()) == SD_EVENT_RUNNING;
                              requests_.emplace_back(action, token);
                          }};
    BusHandle other_;
};

TEST_F(DBusActivationTest, NotifiesTheFirstInstanceOfEachFurtherStart) {
    startAgain();
    ASSERT_TRUE(isActivated(1));
    startAgain();
    startAgain();
    ASSERT_TRUE(isActivated(3));
    EXPECT_EQ(tokens_, (std::vector<std::string>{"", "", ""}));
}

TEST_F(DBusActivationTest, PassesOnTheTokenThatTheDesktopGaveToTheFurtherStart) {
    environment_.set("DESKTOP_STARTUP_ID", "an id_TIME1");
    startAgain();
    ASSERT_TRUE(isActivated(1));
    environment_.set("XDG_ACTIVATION_TOKEN", "a token");
    startAgain();
    ASSERT_TRUE(isActivated(2));
    environment_.set("XDG_ACTIVATION_TOKEN", "");
    environment_.set("DESKTOP_STARTUP_ID", "\xFF");
    startAgain();
    ASSERT_TRUE(isActivated(3));
    EXPECT_EQ(tokens_, (std::vector<std::string>{"an id_TIME1", "a token", "\xEF\xBF\xBD"}));
}

// A terminal that was started with a token may leave it to what is started from there.
TEST_F(DBusActivationTest, PrefersTheStartupIDOnX) {
    environment_.unset({"WAYLAND_DISPLAY"});
    environment_.set("DISPLAY", ":0");
    environment_.set("XDG_ACTIVATION_TOKEN", "an old token");
    environment_.set("DESKTOP_STARTUP_ID", "an id_TIME1");
    startAgain();
    ASSERT_TRUE(isActivated(1));
    EXPECT_EQ(DBusActivation::takeOwnToken(), "an id_TIME1");
    environment_.set("XDG_ACTIVATION_TOKEN", "a token");
    environment_.set("DESKTOP_STARTUP_ID", "");
    startAgain();
    ASSERT_TRUE(isActivated(2));
    EXPECT_EQ(DBusActivation::takeOwnToken(), "a token");
    EXPECT_EQ(tokens_, (std::vector<std::string>{"an id_TIME1", "a token"}));
}

TEST_F(DBusActivationTest, RemovesItsOwnTokenFromTheEnvironment) {
    const auto isInherited = [](const char* name) { return std::getenv(name) != nullptr; };
    EXPECT_EQ(DBusActivation::takeOwnToken(), "");
    environment_.set("DESKTOP_STARTUP_ID", "an id_TIME1");
    EXPECT_EQ(DBusActivation::takeOwnToken(), "an id_TIME1");
    EXPECT_FALSE(isInherited("DESKTOP_STARTUP_ID"));
    environment_.set("XDG_ACTIVATION_TOKEN", "a token");
    environment_.set("DESKTOP_STARTUP_ID", "an id_TIME1");
    EXPECT_EQ(DBusActivation::takeOwnToken(), "a token");
    EXPECT_FALSE(isInherited("XDG_ACTIVATION_TOKEN"));
    EXPECT_FALSE(isInherited("DESKTOP_STARTUP_ID"));
    EXPECT_EQ(DBusActivation::takeOwnToken(), "");
}

TEST_F(DBusActivationTest, AcceptsCallsFromAnyProgram) {
    EXPECT_EQ(call("Activate", noData), "");
    EXPECT_EQ(call("Activate",
                   [](BusWriter& writer) {
                       writer.openArray("{sv}");
                       writer.openEntry("sv").text("something else").openVariant("a(iu)").openArray("(iu)");
                       writer.openStruct("iu").integer(1).natural(2).close().close().close().close();
                       writer.openEntry("sv").text("activation-token").openVariant("s").text("a token");
                       writer.close().close().close();
                   }),
              "");
    ASSERT_TRUE(isActivated(2));
    EXPECT_EQ(tokens_, (std::vector<std::string>{"", "a token"}));
}

TEST_F(DBusActivationTest, RefusesEveryOtherCall) {
    EXPECT_EQ(call("Activate", [](BusWriter&) {}), "error org.freedesktop.DBus.Error.InvalidArgs");
    EXPECT_EQ(call("Activate", [](BusWriter& writer) { writer.text("now"); }),
              "error org.freedesktop.DBus.Error.InvalidArgs");
    EXPECT_EQ(call("Activate",
                   [](BusWriter& writer) {
                       writer.openArray("{sv}").openEntry("sv").text("activation-token").openVariant("i").integer(7);
                       writer.close().close().close();
                   }),
              "error org.freedesktop.DBus.Error.InvalidArgs");
    EXPECT_EQ(call("Open",
                   [](BusWriter& writer) {
                       writer.openArray("s").text("file:///etc/passwd").close();
                       noData(writer);
                   }),
              "error org.freedesktop.DBus.Error.UnknownMethod");
    EXPECT_EQ(call("Activate", noData, "/"), "error org.freedesktop.DBus.Error.UnknownObject");
    EXPECT_EQ(call("Activate", noData, "/org/ble_kovra/BLEKovra", "org.example.Nothing"),
              "error org.freedesktop.DBus.Error.UnknownMethod");
    turnsWithin(loop_, std::chrono::milliseconds(50));
    EXPECT_TRUE(tokens_.empty());
}

TEST_F(DBusActivationTest, PassesOnTheActionsThatOtherProgramsAskForFromTheQueue) {
    for (const char* action : {"toggle", "on", "off", "settings", "hotkey", "quit"}) {
        EXPECT_EQ(call("ActivateAction",
                       [&](BusWriter& writer) {
                           writer.text(action).openArray("v").close();
                           writer.openArray("{sv}").entry("activation-token", std::string("of ") + action).close();
                       }),
                  "");
    }
    EXPECT_TRUE(turnUntil(loop_, [&] { return requests_.size() == 6; }));
    EXPECT_EQ(requests_,
              (std::vector<std::pair<ApplicationAction, std::string>>{{ApplicationAction::toggle, "of toggle"},
                                                                      {ApplicationAction::on, "of on"},
                                                                      {ApplicationAction::off, "of off"},
                                                                      {ApplicationAction::settings, "of settings"},
                                                                      {ApplicationAction::hotKey, "of hotkey"},
                                                                      {ApplicationAction::quit, "of quit"}}));
    EXPECT_FALSE(wasInDispatch_);
    EXPECT_TRUE(tokens_.empty());
}

TEST_F(DBusActivationTest, RefusesActionsThatDoNotExistOrHaveAParameter) {
    const auto action = [&](const char* name, const Write& parameters) {
        return call("ActivateAction", [&](BusWriter& writer) {
            writer.text(name).openArray("v");
            parameters(writer);
            writer.close();
            noData(writer);
        });
    };
    const auto none = [](BusWriter&) {};
    constexpr const char* refused = "error org.freedesktop.DBus.Error.InvalidArgs";
    for (const char* name : {"", "Toggle", "toggle ", "mute", "activate-driver"})
        EXPECT_EQ(action(name, none), refused);
    EXPECT_EQ(action("toggle", [](BusWriter& writer) { writer.openVariant("s").text("now").close(); }), refused);
    EXPECT_EQ(call("ActivateAction", [](BusWriter& writer) { writer.text("toggle"); }), refused);
    turnsWithin(loop_, std::chrono::milliseconds(50));
    EXPECT_TRUE(requests_.empty());
}

TEST_F(DBusActivationTest, IsExportedAgainAfterTheBusHasRestarted) {
    daemon_.restart();
    EXPECT_TRUE(turnUntil(loop_, isSecondStart));
    EXPECT_TRUE(isActivated(1));
}

TEST_F(DBusActivationTest, AnswersWithItsVersion) {
    const auto version = BuildBundle().infoDictionaryValue("CFBundleShortVersionString");
    EXPECT_EQ(call(
                  "Version", [](BusWriter&) {}, "/org/ble_kovra/BLEKovra", "org.ble_kovra.BLEKovra"),
              '"' + std::get<std::string>(*version) + '"');
    EXPECT_TRUE(tokens_.empty());
}

TEST_F(DBusActivationTest, DoesNotDelayAFurtherStartIfTheFirstInstanceHangs) {
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_TRUE(isSecondStart());  // while the loop of the first instance does not run
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2));
    EXPECT_TRUE(isActivated(1));
}

}  // namespace
}  // namespace kovra
