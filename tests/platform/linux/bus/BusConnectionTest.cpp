#include "BLE_kovra/platform/linux/bus/BusConnection.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <string>
#include <utility>
#include <vector>

#include "BLE_kovra/platform/linux/bus/SystemBus.h"
#include "tests/platform/linux/bus/Forger.h"
#include "tests/platform/linux/loop/Turns.h"
#include "tests/support/linux/PrivateBus.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;

constexpr const char* service = "org.example.Service";
constexpr const char* path = "/service";
constexpr const char* interface = "org.example.Interface";

// The program's connection, and a service on the same bus that emits signals and echoes the argument of a call.
class BusConnectionTest : public testing::Test {
  protected:
    BusConnectionTest() {
        static const sd_bus_vtable methods[] = {SD_BUS_VTABLE_START(0),
                                                SD_BUS_METHOD("Echo", "s", "s", echo, SD_BUS_VTABLE_UNPRIVILEGED),
                                                SD_BUS_VTABLE_END};
        EXPECT_GE(sd_bus_request_name(other().bus(), service, 0), 0);
        methods_ = other().exportObject(path, interface, methods, nullptr);
    }

    BusConnection& other() { return *service_.connection(); }
    BusConnection& bus() { return *program_.connection(); }
    void emit(const std::string& value, const char* from = path) {
        other().emit(from, interface, "Changed", [&](BusWriter& writer) { writer.text(value); });
    }
    BusToken receiveChanges() {
        return bus().receive({service, path, interface, "Changed"}, [this](sd_bus_message* message) { note(message); });
    }
    void forge(const std::string& value) {
        forger_.send(Forger::nameOf(program_.bus()), path, interface, "Changed", "s", value.c_str());
    }
    void note(sd_bus_message* message) {
        const char* text = nullptr;
        EXPECT_GT(sd_bus_message_read(message, "s", &text), 0);
        received_ += std::string(text) + " ";
    }
    // Repeats the signal until it is received, because the bus installs a match some time after the program requests
    // it.
    void emitUntilReceived(const std::string& value) {
        for (int tries = 0; received_.empty() && tries < 500; ++tries) {
            emit(value);
            turnUntil(loop_, [&] { return !received_.empty(); }, 20ms);
        }
        awaitReply();
        received_.clear();
    }
    // Calls the service and waits for its reply. The program has then received everything that the service sent before.
    void awaitReply() {
        bool isAnswered = false;
        const auto token = bus().call(
            {service, path, interface, "Echo"}, [](BusWriter& writer) { writer.text("x"); },
            [&](sd_bus_message*) { isAnswered = true; });
        EXPECT_TRUE(turnUntil(loop_, [&] { return isAnswered; }));
    }
    // Calls the bus and waits for its reply. Reads and keeps all messages that arrive before it.
    static void askBus(BusConnection& connection) {
        constexpr const char* name = "org.freedesktop.DBus";
        EXPECT_GE(sd_bus_call_method(connection.bus(), name, "/", name, "GetId", nullptr, nullptr, ""), 0);
    }
    bool receives(const std::string& all) {
        return turnUntil(loop_, [&] { return received_ == all; });
    }
    static int echo(sd_bus_message* call, void*, sd_bus_error*) {
        const char* text = nullptr;
        if (sd_bus_message_read(call, "s", &text) < 0) return -EINVAL;
        return answer(call, [&](BusWriter& writer) { writer.text(text); });
    }

    PrivateBus daemon_{"DBUS_SYSTEM_BUS_ADDRESS"};
    SdEventLoop loop_;
    SystemBus service_{loop_};
    SystemBus program_{loop_};
    Forger forger_{Forger::Bus::system};
    BusSlot methods_;
    std::string received_;
};

TEST_F(BusConnectionTest, ReceivesTheSignalsOfOnePathInOrder) {
    const auto token = receiveChanges();
    emitUntilReceived("ready");
    emit("one");
    emit("elsewhere", "/other");
    emit("two");
    EXPECT_TRUE(receives("one two "));
}

TEST_F(BusConnectionTest, DeliversASignalToEverySubscriber) {
    const auto one = receiveChanges();
    const auto other = receiveChanges();
    emitUntilReceived("ready");
    emit("both");
    EXPECT_TRUE(receives("both both "));
}

// Of messages that were read together, sd-bus itself dispatches one in each turn.
TEST_F(BusConnectionTest, DispatchesAllMessagesThatItHasReadInOneTurn) {
    const auto token = receiveChanges();
    emitUntilReceived("ready");
    for (const char* value : {"one", "two", "three"}) emit(value);
    askBus(other());  // from then on the bus has passed the signals on
    askBus(bus());
    int turns = 0;
    loop_.runUntil([&] { return received_ == "one two three " || ++turns > 9; });
    EXPECT_EQ(turns, 1);
}

TEST_F(BusConnectionTest, DeliversNothingAfterTheTokenIsReleasedNotEvenAQueuedSignal) {
    auto token = receiveChanges();
    emitUntilReceived("ready");
    emit("late");
    const auto last = bus().call(
        {service, path, interface, "Echo"}, [](BusWriter& writer) { writer.text("x"); },
        [this](sd_bus_message*) { received_ += "answered "; });
    loop_.async([&] { token.reset(); });
    EXPECT_TRUE(receives("answered "));
}

TEST_F(BusConnectionTest, AllowsAHandlerToReleaseItsOwnToken) {
    BusToken token = bus().receive({service, path, interface, "Changed"}, [&](sd_bus_message* message) {
        token.reset();
        note(message);
    });
    for (int tries = 0; received_.empty() && tries < 500; ++tries) {
        emit("once");
        turnUntil(loop_, [&] { return !received_.empty(); }, 20ms);
    }
    emit("again");
    awaitReply();
    EXPECT_EQ(received_, "once ");
}

TEST_F(BusConnectionTest, DeliversTheReplyFromTheQueue) {
    bool isInside = true;
    const auto token = bus().call(
        {service, path, interface, "Echo"}, [](BusWriter& writer) { writer.text("hello"); },
        [&](sd_bus_message* message) {
            EXPECT_FALSE(isInside);
            note(message);
        });
    isInside = false;
    EXPECT_TRUE(receives("hello "));
}

TEST_F(BusConnectionTest, DeliversTheErrorOfACallToAnAbsentServiceAndStartsNoService) {
    std::string error;
    const auto token = bus().call(
        {"org.example.Nobody", path, interface, "Echo"}, [](BusWriter& writer) { writer.text("hello"); },
        [&](sd_bus_message* message) { error = sd_bus_message_get_error(message)->name; });
    EXPECT_TRUE(turnUntil(loop_, [&] { return !error.empty(); }));
    EXPECT_EQ(error, SD_BUS_ERROR_NAME_HAS_NO_OWNER);  // the bus has not tried to start the service
}

TEST_F(BusConnectionTest, WatchesTheOwnerOfOneName) {
    std::string owners;
    const auto token = bus().watchOwner("org.example.Watched", [&](std::string_view before, std::string_view now) {
        owners += std::string(before.empty() ? "none" : "one") + ">" + (now.empty() ? "none " : "one ");
    });
    for (int tries = 0; owners.empty() && tries < 500; ++tries) {
        ASSERT_GE(sd_bus_request_name(other().bus(), "org.example.Watched", 0), 0);
        ASSERT_GE(sd_bus_release_name(other().bus(), "org.example.Watched"), 0);
        turnUntil(loop_, [&] { return !owners.empty(); }, 20ms);
    }
    awaitReply();
    owners.clear();
    ASSERT_GE(sd_bus_request_name(other().bus(), "org.example.Unwatched", 0), 0);
    ASSERT_GE(sd_bus_request_name(other().bus(), "org.example.Watched", 0), 0);
    EXPECT_TRUE(turnUntil(loop_, [&] { return owners == "none>one "; })) << owners;
    ASSERT_GE(sd_bus_release_name(other().bus(), "org.example.Watched"), 0);
    EXPECT_TRUE(turnUntil(loop_, [&] { return owners == "none>one one>none "; })) << owners;
}

// Any client may send a signal directly to another client.
TEST_F(BusConnectionTest, DropsASignalThatAnotherClientForges) {
    const auto token = receiveChanges();
    emitUntilReceived("ready");
    forge("forged");
    emit("real");
    EXPECT_TRUE(receives("real "));
}

TEST_F(BusConnectionTest, DropsAForgedSignalWhileTheServiceIsAbsent) {
    const auto token = bus().receive({"org.example.Absent", path, interface, "Changed"},
                                     [this](sd_bus_message* message) { note(message); });
    const auto last = receiveChanges();
    emitUntilReceived("ready");
    forge("forged");
    emit("real");
    EXPECT_TRUE(receives("real "));
}

// Closing a descriptor that another client has sent could take as long as that client wants.
TEST_F(BusConnectionTest, ReceivesNoFileDescriptor) {
    awaitReply();
    EXPECT_EQ(forger_.errorOfDescriptor(Forger::nameOf(program_.bus()), path, interface), SD_BUS_ERROR_NOT_SUPPORTED);
}

TEST_F(BusConnectionTest, DropsAForgedChangeOfAnOwner) {
    std::string owners;
    const auto token = bus().watchOwner(
        service, [&](std::string_view, std::string_view now) { owners += now.empty() ? "none " : "one "; });
    const auto changes = receiveChanges();
    emitUntilReceived("ready");
    constexpr const char* daemon = "org.freedesktop.DBus";
    const std::string program = Forger::nameOf(program_.bus());
    for (const std::string& owner : {std::string(), forger_.name()}) {
        forger_.send(program, "/org/freedesktop/DBus", daemon, "NameOwnerChanged", "sss", service, ":1.0",
                     owner.c_str());
    }
    forge("forged");
    emit("real");
    EXPECT_TRUE(receives("real "));
    EXPECT_EQ(owners, "");
}

TEST_F(BusConnectionTest, FollowsAServiceToItsNextOwner) {
    const auto token = receiveChanges();
    emitUntilReceived("ready");
    ASSERT_GE(sd_bus_release_name(other().bus(), service), 0);
    SystemBus next(loop_);
    ASSERT_GE(sd_bus_request_name(next.bus(), service, 0), 0);
    emit("former");
    ASSERT_GE(sd_bus_flush(other().bus()), 0);
    next.connection()->emit(path, interface, "Changed", [](BusWriter& writer) { writer.text("next"); });
    EXPECT_TRUE(receives("next "));
}

TEST_F(BusConnectionTest, RecordsAFailureAndRemainsUsable) {
    const auto bad = bus().receive({service, "no path", interface, "Changed"}, [](sd_bus_message*) {});
    ASSERT_TRUE(turnUntil(loop_, [&] { return !program_.failures().all().empty(); }));
    EXPECT_TRUE(program_.failures().all().front().starts_with("org.example.Interface.Changed: "))
        << program_.failures().all().front();
    const auto good = receiveChanges();
    emitUntilReceived("ready");
    EXPECT_EQ(program_.failures().all().size(), 1U);
}

// The bus daemon of this test allows 16 matches for each connection.
TEST_F(BusConnectionTest, RecordsThatTheBusRefusedAMatchAndStaysConnected) {
    daemon_.end();
    PrivateBus strict("DBUS_SYSTEM_BUS_ADDRESS", "<limit name=\"max_match_rules_per_connection\">16</limit>");
    SystemBus program(loop_);
    std::vector<BusToken> tokens;
    for (int i = 0; i < 20; ++i) {
        tokens.push_back(program.connection()->receive({service, path, interface, "Changed" + std::to_string(i)},
                                                       [](sd_bus_message*) {}));
    }
    EXPECT_TRUE(turnUntil(loop_, [&] { return !program.failures().all().empty(); }));
    turnsWithin(loop_, 50ms);
    EXPECT_NE(program.connection(), nullptr);
    EXPECT_GE(program.failures().all().size(), 4U);
    EXPECT_TRUE(program.failures().all().back().starts_with("org.example.Interface.Changed19: "));
}

TEST_F(BusConnectionTest, IsClosedAfterTheBusHasDisconnected) {
    daemon_.end();
    ASSERT_TRUE(turnUntil(loop_, [&] { return program_.connection() == nullptr; }));
    EXPECT_EQ(program_.bus(), nullptr);
}

}  // namespace
}  // namespace kovra
