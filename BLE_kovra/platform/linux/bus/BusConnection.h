#pragma once

#include <systemd/sd-bus.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "BLE_kovra/platform/linux/bus/BusFailures.h"
#include "BLE_kovra/platform/linux/bus/BusMessage.h"
#include "BLE_kovra/platform/linux/loop/Listeners.h"
#include "BLE_kovra/platform/linux/loop/SdEventLoop.h"

namespace kovra {

class NameOwner;

// The owner of a subscription, or of a call that waits for its reply. Destroying it cancels the subscription or the
// call.
using BusToken = std::shared_ptr<const void>;

// A selection of signals by their header and first argument.
struct BusSignal {
    std::string sender;  // the well-known name of the service that sends the signal; empty for any program
    std::string path;
    std::string interface;
    std::string member;
    std::string arg0 = {};      // if not empty: the first argument is this string
    std::string arg0path = {};  // if not empty: the first argument is this path, or is below it if it ends in a slash
};

struct BusMethod {
    const char* destination;
    const char* path;
    const char* interface;
    const char* member;
    bool startsService = false;  // whether the bus may start the service if it is not running
};

// A connection to a message bus, attached to the event loop.
//
// Signals, replies and changes of owners are delivered from the queue, never from inside sd-bus's dispatch. No function
// blocks. Failures are recorded in `failures`. The connection remains usable after a failure, unless it could not be
// attached to the event loop. After the bus has disconnected, the connection is closed in the next turn of the queue.
class BusConnection {
  public:
    using Receive = std::function<void(sd_bus_message*)>;
    using Write = std::function<void(BusWriter&)>;
    using OwnerChanged = std::function<void(std::string_view before, std::string_view now)>;  // "" for no owner

    // `lost` is called from the queue after the bus has disconnected. It may destroy this connection.
    BusConnection(SdEventLoop& loop, BusHandle bus, BusFailures& failures, std::function<void()> lost = {});

    // Returns the connection of sd-bus. Returns null after the bus has disconnected, or if the connection could not be
    // attached to the event loop. The functions below then do nothing.
    sd_bus* bus() const { return bus_.get(); }

    // Delivers only signals that the owner of the name `signal.sender` has sent. Signals that other clients forge are
    // dropped. If no sender is named, any program may have sent the signal.
    [[nodiscard]] BusToken receive(const BusSignal& signal, Receive received);
    // Reports each change of the name's owner. Subscribes to this name only, so that the bus does not report every
    // program that connects or disconnects.
    [[nodiscard]] BusToken watchOwner(const std::string& name, OwnerChanged changed);
    // Makes a call. `answered` receives the reply, which may be an error. Returns null if the call could not be sent.
    [[nodiscard]] BusToken call(const BusMethod& method, const Write& write, Receive answered);
    // Makes a call that requests no reply.
    void send(const BusMethod& method, const Write& write);
    void emit(const char* path, const char* interface, const char* signal, const Write& write);
    // Exports an object. The handlers of the table run inside sd-bus's dispatch. They must reply before they return,
    // and queue whatever may call the application.
    [[nodiscard]] BusSlot exportObject(const char* path, const char* interface, const sd_bus_vtable* table,
                                       void* context);
    // Requests the name. Does not report whether the bus grants it.
    void requestName(const char* name);

  private:
    class Request;

    std::shared_ptr<NameOwner> ownerOf(const std::string& name);
    BusMessage newCall(const BusMethod& method, const Write& write);
    void dispatchQueued();
    void check(int result, const std::string& what) const;

    SdEventLoop& loop_;
    BusFailures& failures_;
    std::function<void()> lost_;
    BusHandle bus_;
    std::map<std::string, std::weak_ptr<NameOwner>> owners_;  // one for all subscriptions to a service
    BusToken disconnected_;
    Listeners<>::Token dispatching_;
};

}  // namespace kovra
