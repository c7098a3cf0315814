#pragma once

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "BLE_kovra/platform/linux/bus/BusConnection.h"
#include "BLE_kovra/platform/linux/bus/BusMessage.h"
#include "tests/platform/linux/bus/BusText.h"
#include "tests/platform/linux/loop/Turns.h"

namespace kovra {

// A panel with its own bus connection. It accepts registrations as a watcher, reads items as a host, and records every
// signal of an item. It shares the event loop with the code under test.
class Panel {
  public:
    enum class Hosts { none, one };

    explicit Panel(SdEventLoop& loop, Hosts hosts = Hosts::one) : loop_(loop), hasHost_(hosts == Hosts::one) {
        sd_bus* bus = nullptr;
        EXPECT_GE(sd_bus_open_user(&bus), 0);
        bus_.reset(bus);
        EXPECT_GE(sd_bus_attach_event(bus, loop.event(), SD_EVENT_PRIORITY_NORMAL), 0);
        EXPECT_GE(sd_bus_add_object_vtable(bus, nullptr, path, name, vtable.data(), this), 0);
        for (const char* interface : {"org.kde.StatusNotifierItem", "com.canonical.dbusmenu"}) {
            const std::string match = "type='signal',interface='" + std::string(interface) + "'";
            EXPECT_GE(sd_bus_add_match(bus, nullptr, match.c_str(), onSignal, this), 0);
        }
        EXPECT_GE(sd_bus_request_name(bus, name, 0), 0);
    }
    ~Panel() { sd_bus_flush(bus_.get()); }
    Panel(const Panel&) = delete;
    Panel& operator=(const Panel&) = delete;

    void setHost(Hosts hosts) {
        hasHost_ = hosts == Hosts::one;
        const char* signal = hasHost_ ? "StatusNotifierHostRegistered" : "StatusNotifierHostUnregistered";
        EXPECT_GE(sd_bus_emit_signal(bus_.get(), path, name, signal, nullptr), 0);
    }

    // Waits for the first item. Returns false if none registers within the timeout.
    bool findsItem() {
        return turnUntil(loop_, [this] { return !items.empty(); });
    }

    using Write = std::function<void(BusWriter&)>;
    // Calls a method of the item. `write` writes the arguments. Returns the reply as text, or "error NAME".
    std::string call(const char* object, const char* interface, const char* member, const Write& write = {}) {
        sd_bus_message* made = nullptr;
        EXPECT_GE(sd_bus_message_new_method_call(bus_.get(), &made, item().c_str(), object, interface, member), 0);
        const BusMessage message(made);
        if (write) {
            BusWriter writer(made);
            write(writer);
            EXPECT_GE(writer.result(), 0);
        }
        return send(made);
    }
    std::string send(sd_bus_message* message) {
        std::optional<std::string> answer;
        sd_bus_slot* slot = nullptr;
        EXPECT_GE(sd_bus_call_async(bus_.get(), &slot, message, onReply, &answer, 0), 0);
        const BusSlot pending(slot);
        EXPECT_TRUE(turnUntil(loop_, [&] { return answer.has_value(); }));
        return answer.value_or("no answer");
    }
    std::string property(const char* object, const char* interface, const char* wanted) {
        return call(object, "org.freedesktop.DBus.Properties", "Get",
                    [&](BusWriter& writer) { writer.text(interface).text(wanted); });
    }
    std::string itemProperty(const char* wanted) {
        return property("/StatusNotifierItem", "org.kde.StatusNotifierItem", wanted);
    }
    std::string menu(const char* member, const Write& write) {
        return call("/MenuBar", "com.canonical.dbusmenu", member, write);
    }
    std::string layout(std::int32_t parent = 0, std::int32_t depth = -1, const std::vector<std::string>& names = {}) {
        return menu("GetLayout", [&](BusWriter& writer) {
            writer.integer(parent).integer(depth).openArray("s");
            for (const std::string& wanted : names) writer.text(wanted);
            writer.close();
        });
    }
    std::string event(std::int32_t id, const char* event) {
        return menu("Event", [&](BusWriter& writer) {
            writer.integer(id).text(event).openVariant("i").integer(0).close().natural(0);
        });
    }
    std::string click(std::int32_t id) { return event(id, "clicked"); }

    // Returns the signals of the items since the last call, each followed by "; ". The item's reply to a request for a
    // property arrives after all its earlier signals, so none is missing.
    std::string signals() {
        itemProperty("Id");
        return std::exchange(signals_, {});
    }

    // Calls the client three times. The bus keeps the order of messages, so the client has then handled all earlier
    // messages, its requests to the panel, and the replies.
    void settle(const std::string& client) {
        for (int exchanges = 0; exchanges < 3; ++exchanges) {
            sd_bus_message* made = nullptr;
            EXPECT_GE(sd_bus_message_new_method_call(bus_.get(), &made, client.c_str(), "/",
                                                     "org.freedesktop.DBus.Peer", "Ping"),
                      0);
            const BusMessage message(made);
            EXPECT_EQ(send(made), "");
        }
    }

    sd_bus* bus() const { return bus_.get(); }
    const std::string& item() const {
        static const std::string nobody = "org.example.Nobody";
        return items.empty() ? nobody : items.back();
    }

    std::vector<std::string> items;  // in the order of their registration
    bool refusesItems = false;

  private:
    static constexpr const char* name = "org.kde.StatusNotifierWatcher";
    static constexpr const char* path = "/StatusNotifierWatcher";

    static int registerItem(sd_bus_message* call, void* context, sd_bus_error* error) {
        auto* panel = static_cast<Panel*>(context);
        const char* item = nullptr;
        if (sd_bus_message_read(call, "s", &item) < 0) return -EINVAL;
        if (panel->refusesItems) return sd_bus_error_set(error, SD_BUS_ERROR_UNKNOWN_OBJECT, "Not yet.");
        // The item of the caller, if it is named by its path.
        panel->items.emplace_back(*item == '/' ? sd_bus_message_get_sender(call) : item);
        return sd_bus_reply_method_return(call, "");
    }
    static int isHostRegistered(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void* context,
                                sd_bus_error*) {
        return sd_bus_message_append(reply, "b", static_cast<int>(static_cast<Panel*>(context)->hasHost_));
    }
    static int onSignal(sd_bus_message* signal, void* context, sd_bus_error*) {
        auto* panel = static_cast<Panel*>(context);
        const std::string contents = textOf(signal);
        panel->signals_ += sd_bus_message_get_member(signal) + (contents.empty() ? "" : " " + contents) + "; ";
        return 0;
    }
    static int onReply(sd_bus_message* reply, void* context, sd_bus_error*) {
        const sd_bus_error* error = sd_bus_message_get_error(reply);
        *static_cast<std::optional<std::string>*>(context) =
            error == nullptr ? textOf(reply) : "error " + std::string(error->name);
        return 0;
    }
    static const std::array<sd_bus_vtable, 4> vtable;

    SdEventLoop& loop_;
    bool hasHost_;
    BusHandle bus_;
    std::string signals_;
};

inline const std::array<sd_bus_vtable, 4> Panel::vtable = {{
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("RegisterStatusNotifierItem", "s", "", registerItem, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_PROPERTY("IsStatusNotifierHostRegistered", "b", isHostRegistered, 0, 0),
    SD_BUS_VTABLE_END,
}};

}  // namespace kovra
