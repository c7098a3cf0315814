#pragma once

#include <systemd/sd-bus.h>

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "BLE_kovra/platform/linux/bus/BusFailures.h"
#include "BLE_kovra/platform/linux/bus/BusMessage.h"
#include "BLE_kovra/platform/linux/loop/Handles.h"
#include "BLE_kovra/platform/linux/loop/Lifetime.h"
#include "BLE_kovra/platform/linux/loop/SdEventLoop.h"

namespace kovra {

using BusHandle = Handle<sd_bus, sd_bus_close_unref>;
using BusSlot = Handle<sd_bus_slot, sd_bus_slot_unref>;

// What is asked of the bus holds for as long as its token lives.
using BusToken = std::shared_ptr<const void>;

// The signals of one kind.
struct BusSignal {
    std::string sender;  // the name of the service that sends it
    std::string path;
    std::string interface;
    std::string member;
    std::string arg0 = {};      // where not empty: the first argument is this text
    std::string arg0path = {};  // where not empty: the first argument is this path, or below it if it ends in a slash
};

struct BusMethod {
    const char* destination;
    const char* path;
    const char* interface;
    const char* member;
    bool startsService = false;  // whether the bus may start the service where it does not run
};

// A connection to a message bus that takes its turn in the event loop.
//
// Signals, answers and changes of owners come from the queue, never from inside the library's dispatch. Nothing waits.
// A failure is kept in `failures`; the connection and everything else go on. When the bus goes away the connection is
// closed, one queue turn later.
class BusConnection {
  public:
    using Receive = std::function<void(sd_bus_message*)>;
    using Write = std::function<void(BusWriter&)>;
    using OwnerChanged = std::function<void(std::string_view before, std::string_view now)>;  // empty: nobody

    // `lost` is called from the queue once the bus is gone; it may destroy this connection.
    BusConnection(SdEventLoop& loop, BusHandle bus, BusFailures& failures, std::function<void()> lost = {});

    // Null once the bus is gone; all that follows then does nothing.
    sd_bus* bus() const { return bus_.get(); }

    [[nodiscard]] BusToken receive(const BusSignal& signal, Receive received);
    // Of this one name, so that the bus does not report every program that comes and goes.
    [[nodiscard]] BusToken watchOwner(const std::string& name, OwnerChanged changed);
    // `answered` is given the answer, which may be an error.
    [[nodiscard]] BusToken call(const BusMethod& method, const Write& write, Receive answered);
    // A call whose answer is of no interest.
    void send(const BusMethod& method, const Write& write);
    void emit(const char* path, const char* interface, const char* signal, const Write& write);
    // Calls come from inside the library's dispatch: an answer is given there, everything else is queued.
    [[nodiscard]] BusSlot exportObject(const char* path, const char* interface, const sd_bus_vtable* table,
                                       void* context);
    // Whether the name is granted is not reported.
    void requestName(const char* name);
    void releaseName(const char* name);

  private:
    class Request;

    BusMessage newCall(const BusMethod& method, const Write& write);
    void check(int result, const std::string& what) const;

    SdEventLoop& loop_;
    BusFailures& failures_;
    std::function<void()> lost_;
    BusHandle bus_;
    BusToken disconnected_;
    Lifetime lifetime_;
};

}  // namespace kovra
