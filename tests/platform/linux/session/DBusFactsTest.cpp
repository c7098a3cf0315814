#include "BLE_kovra/platform/linux/session/DBusFacts.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <optional>
#include <string>

#include "BLE_kovra/platform/linux/bus/BusMessage.h"
#include "BLE_kovra/platform/linux/session/DBusActivation.h"
#include "BLE_kovra/platform/linux/session/SingleInstance.h"
#include "tests/platform/linux/bus/BusText.h"
#include "tests/platform/linux/loop/Turns.h"
#include "tests/support/linux/PrivateBus.h"

namespace kovra {
namespace {

using Presence = ApplicationFacts::Presence;

// The object with its methods and its properties, and another program on its session bus.
class DBusFactsTest : public testing::Test {
  protected:
    DBusFactsTest() {
        connect();
        connection()->requestName(SingleInstance::busName);
        activation_.exportOn(*connection());
    }

    void connect() {
        sd_bus* bus = nullptr;
        EXPECT_GE(sd_bus_open_user(&bus), 0);
        other_.reset(bus);
        EXPECT_GE(sd_bus_attach_event(bus, loop_.event(), SD_EVENT_PRIORITY_NORMAL), 0);
    }
    BusConnection* connection() { return bus_.connection(); }
    // Reads all properties. Returns the reply as text, or "error NAME".
    std::string readAll() {
        return call("GetAll", [](BusWriter& writer) { writer.text(DBusActivation::ownInterface); });
    }
    std::string call(const char* member, const std::function<void(BusWriter&)>& write) {
        sd_bus_message* made = nullptr;
        EXPECT_GE(sd_bus_message_new_method_call(other_.get(), &made, SingleInstance::busName, DBusActivation::path,
                                                 "org.freedesktop.DBus.Properties", member),
                  0);
        const BusMessage message(made);
        BusWriter writer(made);
        write(writer);
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

    PrivateBus daemon_{"DBUS_SESSION_BUS_ADDRESS"};
    SdEventLoop loop_;
    SessionBus bus_{loop_};
    DBusActivation activation_{loop_, [](const std::string&) {}, [](ApplicationAction, const std::string&) {}};
    std::optional<ApplicationFacts> known_;
    HotKeyState hotKey_;
    int readings_ = 0;
    BusFailures failures_;
    DBusFacts facts_{bus_,
                     {.application =
                          [this] {
                              ++readings_;
                              return known_;
                          },
                      .hotKey = [this] { return hotKey_; },
                      .tray = [] { return "panel"; },
                      .sessionBus = &failures_,
                      .systemBus = nullptr}};
    BusHandle other_;
};

TEST_F(DBusFactsTest, AreThePresentOnes) {
    known_ = ApplicationFacts{.isEnabled = true,
                              .mode = "onDevice",
                              .isMuting = true,
                              .lastWritten = "on",
                              .chosen = {{"Mouse \xFF", Presence::inGrace}, {"Ball", Presence::away}}};
    failures_.add("org.example.Match: refused");
    hotKey_ = {HotKeyState::Holder::another, ""};
    const std::string all = readAll();
    for (const char* part : {"\"Enabled\"",
                             "\"Mode\"",
                             "\"onDevice\"",
                             "\"Muting\"",
                             "\"LastWritten\"",
                             "\"on\"",
                             "\"Chosen\"",
                             "\"Mouse \xEF\xBF\xBD\"",
                             "\"inGrace\"",
                             "\"Ball\"",
                             "\"away\"",
                             "\"HotKey\"",
                             "\"taken\"",
                             "\"Ctrl+Alt+T\"",
                             "\"Tray\"",
                             "\"panel\"",
                             "\"SessionBusFailures\"",
                             "\"org.example.Match: refused\"",
                             "\"SystemBusFailures\"",
                             "\"Version\""}) {
        EXPECT_NE(all.find(part), std::string::npos) << part << " is missing in " << all;
    }
    known_->chosen.clear();
    EXPECT_EQ(readAll().find("inGrace"), std::string::npos);
}

TEST_F(DBusFactsTest, NameTheHolderOfTheHotKeyAndItsCombination) {
    const auto hotKey = [this](HotKeyState::Holder holder, const std::string& combination) {
        hotKey_ = {holder, combination};
        const std::string all = readAll();
        const auto valueOf = [&](const std::string& name) {
            const std::size_t begin = all.find('"' + name + "\":\"") + name.size() + 4;
            return all.substr(begin, all.find('"', begin) - begin);
        };
        return valueOf("HotKey") + " " + valueOf("Combination");
    };
    EXPECT_EQ(hotKey(HotKeyState::Holder::us, ""), "ours Ctrl+Alt+T");
    EXPECT_EQ(hotKey(HotKeyState::Holder::us, "Meta+M"), "ours Meta+M");
    EXPECT_EQ(hotKey(HotKeyState::Holder::another, ""), "taken Ctrl+Alt+T");
    EXPECT_EQ(hotKey(HotKeyState::Holder::unrequested, ""), "onRequest Ctrl+Alt+T");
    EXPECT_EQ(hotKey(HotKeyState::Holder::refused, ""), "onRequest Ctrl+Alt+T");
    EXPECT_EQ(hotKey(HotKeyState::Holder::nobody, ""), "unavailable Ctrl+Alt+T");
}

TEST_F(DBusFactsTest, AreComputedOnlyWhenTheyAreRead) {
    turnsWithin(loop_, std::chrono::milliseconds(50));
    EXPECT_EQ(readings_, 0);
    readAll();
    EXPECT_GT(readings_, 0);
}

TEST_F(DBusFactsTest, CannotBeChanged) {
    const std::string reply = call("Set", [](BusWriter& writer) {
        writer.text(DBusActivation::ownInterface).text("Enabled").openVariant("b").boolean(false).close();
    });
    EXPECT_EQ(reply, "error org.freedesktop.DBus.Error.PropertyReadOnly");
}

TEST_F(DBusFactsTest, AreThereAgainAfterTheBusHasRestarted) {
    EXPECT_NE(readAll().find("Enabled"), std::string::npos);
    daemon_.restart();
    ASSERT_TRUE(turnUntil(loop_, [&] { return bus_.connection() == nullptr; }));
    ASSERT_TRUE(turnUntil(loop_, [&] { return bus_.connection() != nullptr; }));
    turnsWithin(loop_, std::chrono::milliseconds(50));
    connect();
    connection()->requestName(SingleInstance::busName);
    turnsWithin(loop_, std::chrono::milliseconds(50));
    EXPECT_NE(readAll().find("Enabled"), std::string::npos);
}

}  // namespace
}  // namespace kovra
