#include "BLE_kovra/platform/linux/bus/BusConnection.h"

#include <cstdint>
#include <utility>

#include "BLE_kovra/platform/linux/bus/NameOwner.h"
#include "BLE_kovra/platform/linux/loop/Lifetime.h"

namespace kovra {

namespace {

std::string nameOf(const BusMethod& method) { return std::string(method.interface) + '.' + method.member; }

std::string ruleOf(const BusSignal& signal) {
    std::string rule = "type='signal'";
    const auto add = [&rule](const char* key, const std::string& value) {
        if (!value.empty()) rule += std::string(",") + key + "='" + value + "'";
    };
    add("sender", signal.sender);
    add("path", signal.path);
    add("interface", signal.interface);
    add("member", signal.member);
    add("arg0", signal.arg0);
    add("arg0path", signal.arg0path);
    return rule;
}

// Without this handler, sd-bus closes the connection if the bus refuses to grant or release a name.
int ignoreAnswer(sd_bus_message*, void*, sd_bus_error*) { return 0; }

}  // namespace

// One subscription or call. Its messages are delivered from the queue.
class BusConnection::Request {
  public:
    // If `sender` is null, messages from any client are delivered.
    Request(SdEventLoop& loop, BusFailures& failures, std::string what, Receive received,
            std::shared_ptr<NameOwner> sender = nullptr)
        : loop_(loop),
          failures_(failures),
          what_(std::move(what)),
          received_(std::move(received)),
          sender_(std::move(sender)) {}

    void hold(sd_bus_slot* slot) { slot_.reset(slot); }

    static int deliver(sd_bus_message* message, void* context, sd_bus_error*) {
        auto* request = static_cast<Request*>(context);
        if (request == nullptr) return 0;
        const std::shared_ptr<sd_bus_message> kept(sd_bus_message_ref(message), sd_bus_message_unref);
        const auto queue = request->lifetime_.guard([request, kept] { request->queue(kept); });
        if (request->sender_)
            request->sender_->ifSent(message, queue);
        else
            queue();
        return 0;
    }
    // Receives the reply to AddMatch. Without this handler, sd-bus closes the connection if the bus refuses the match.
    static int installed(sd_bus_message* answer, void* context, sd_bus_error*) {
        auto* request = static_cast<Request*>(context);
        const sd_bus_error* error = sd_bus_message_get_error(answer);
        if (request != nullptr && error != nullptr) request->failures_.add(request->what_ + ": " + error->message);
        return 0;
    }

  private:
    void queue(const std::shared_ptr<sd_bus_message>& message) {
        loop_.async(lifetime_.guard([this, message] {
            sd_bus_message_rewind(message.get(), 1);  // another request may have read the message
            const Receive received = received_;       // the function may destroy the request
            received(message.get());
        }));
    }

    SdEventLoop& loop_;
    BusFailures& failures_;
    const std::string what_;
    const Receive received_;
    const std::shared_ptr<NameOwner> sender_;
    BusSlot slot_;
    Lifetime lifetime_;
};

BusConnection::BusConnection(SdEventLoop& loop, BusHandle bus, BusFailures& failures, std::function<void()> lost)
    : loop_(loop), failures_(failures), lost_(std::move(lost)), bus_(std::move(bus)) {
    // sd-bus generates the signal Disconnected itself when the connection ends; the bus never sends that signal.
    const auto request = std::make_shared<Request>(loop_, failures_, "disconnection", [this](sd_bus_message*) {
        disconnected_.reset();
        bus_.reset();
        if (const auto then = lost_) then();
    });
    sd_bus_slot* slot = nullptr;
    check(sd_bus_match_signal(bus_.get(), &slot, "org.freedesktop.DBus.Local", "/org/freedesktop/DBus/Local",
                              "org.freedesktop.DBus.Local", "Disconnected", Request::deliver, request.get()),
          "disconnection");
    request->hold(slot);
    disconnected_ = request;
    const int attached = sd_bus_attach_event(bus_.get(), loop_.event(), SD_EVENT_PRIORITY_NORMAL);
    check(attached, "event loop");
    if (attached < 0) bus_.reset();
    dispatching_ = loop_.afterEvents([this] { dispatchQueued(); });
}

// sd-bus dispatches one message for each event. For the others that it has read already it arms a timer that is due at
// once, and arms it again in each turn in which another connection has something to read. At the start, these timers
// would take a thirtieth of the CPU time.
void BusConnection::dispatchQueued() {
    std::uint64_t queued = 0;
    while (bus_ && sd_bus_get_n_queued_read(bus_.get(), &queued) >= 0 && queued > 0 &&
           sd_bus_process(bus_.get(), nullptr) > 0) {
    }
}

BusToken BusConnection::receive(const BusSignal& signal, Receive received) {
    if (!bus_) return nullptr;
    auto request =
        std::make_shared<Request>(loop_, failures_, signal.interface + '.' + signal.member, std::move(received),
                                  signal.sender.empty() ? nullptr : ownerOf(signal.sender));
    sd_bus_slot* slot = nullptr;
    check(sd_bus_add_match_async(bus_.get(), &slot, ruleOf(signal).c_str(), Request::deliver, Request::installed,
                                 request.get()),
          signal.interface + '.' + signal.member);
    request->hold(slot);
    return request;
}

std::shared_ptr<NameOwner> BusConnection::ownerOf(const std::string& name) {
    std::weak_ptr<NameOwner>& known = owners_[name];
    auto owner = known.lock();
    if (!owner) known = owner = std::make_shared<NameOwner>(bus_.get(), name, failures_);
    return owner;
}

BusToken BusConnection::watchOwner(const std::string& name, OwnerChanged changed) {
    constexpr const char* bus = "org.freedesktop.DBus";
    return receive({bus, "/org/freedesktop/DBus", bus, "NameOwnerChanged", name},
                   [changed = std::move(changed)](sd_bus_message* message) {
                       const char* before = nullptr;
                       const char* now = nullptr;
                       if (sd_bus_message_read(message, "sss", nullptr, &before, &now) > 0) changed(before, now);
                   });
}

BusToken BusConnection::call(const BusMethod& method, const Write& write, Receive answered) {
    const BusMessage message = newCall(method, write);
    if (!message) return nullptr;
    auto request = std::make_shared<Request>(loop_, failures_, nameOf(method), std::move(answered));
    sd_bus_slot* slot = nullptr;
    const int result = sd_bus_call_async(bus_.get(), &slot, message.get(), Request::deliver, request.get(), 0);
    check(result, nameOf(method));
    if (result < 0) return nullptr;
    request->hold(slot);
    return request;
}

void BusConnection::send(const BusMethod& method, const Write& write) {
    const BusMessage message = newCall(method, write);
    if (!message) return;
    check(sd_bus_message_set_expect_reply(message.get(), 0), nameOf(method));
    check(sd_bus_send(bus_.get(), message.get(), nullptr), nameOf(method));
}

void BusConnection::emit(const char* path, const char* interface, const char* signal, const Write& write) {
    if (!bus_) return;
    sd_bus_message* made = nullptr;
    int result = sd_bus_message_new_signal(bus_.get(), &made, path, interface, signal);
    const BusMessage message(made);
    BusWriter writer(made);
    if (result >= 0) write(writer);
    if (result >= 0) result = writer.result();
    if (result >= 0) result = sd_bus_send(bus_.get(), made, nullptr);
    check(result, std::string(interface) + '.' + signal);
}

BusSlot BusConnection::exportObject(const char* path, const char* interface, const sd_bus_vtable* table,
                                    void* context) {
    sd_bus_slot* slot = nullptr;
    if (bus_) check(sd_bus_add_object_vtable(bus_.get(), &slot, path, interface, table, context), interface);
    return BusSlot(slot);
}

void BusConnection::requestName(const char* name) {
    if (bus_) check(sd_bus_request_name_async(bus_.get(), nullptr, name, 0, ignoreAnswer, nullptr), name);
}

// Returns a call with its arguments, or null if it cannot be created.
BusMessage BusConnection::newCall(const BusMethod& method, const Write& write) {
    if (!bus_) return nullptr;
    sd_bus_message* made = nullptr;
    int result = sd_bus_message_new_method_call(bus_.get(), &made, method.destination, method.path, method.interface,
                                                method.member);
    BusMessage message(made);
    if (result >= 0) result = sd_bus_message_set_auto_start(made, method.startsService ? 1 : 0);
    BusWriter writer(made);
    if (result >= 0) write(writer);
    if (result >= 0) result = writer.result();
    check(result, nameOf(method));
    return result < 0 ? nullptr : std::move(message);
}

void BusConnection::check(int result, const std::string& what) const {
    if (result < 0) failures_.add(what, result);
}

}  // namespace kovra
