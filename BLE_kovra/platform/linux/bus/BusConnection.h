#pragma once

#include <systemd/sd-bus.h>

#include <functional>
#include <memory>

#include "BLE_kovra/platform/linux/loop/Handles.h"
#include "BLE_kovra/platform/linux/loop/SdEventLoop.h"

namespace kovra {

using BusHandle = Handle<sd_bus, sd_bus_close_unref>;
using BusSlot = Handle<sd_bus_slot, sd_bus_slot_unref>;

// For an answer that nobody needs. Without a handler of its own, the library ends the connection over a name that it is
// not given.
inline int ignoreAnswer(sd_bus_message*, void*, sd_bus_error*) { return 0; }

// A connection to a message bus that takes its turn in the event loop. When the bus goes away the connection is let go
// of, one queue turn later; the loop and everything else go on.
class BusConnection {
  public:
    BusConnection(SdEventLoop& loop, BusHandle bus);

    // Null once the bus is gone.
    sd_bus* bus() const { return bus_.get(); }

    // Called from the queue once the bus is gone. It may destroy this connection.
    std::function<void()> onGone;

  private:
    static int disconnected(sd_bus_message* message, void* context, sd_bus_error* error);

    SdEventLoop& loop_;
    BusHandle bus_;
    BusSlot disconnectedSlot_;
    std::shared_ptr<BusConnection*> self_;  // how a queued block learns that this connection is no more
};

}  // namespace kovra
