#pragma once

#include <systemd/sd-bus.h>

#include <string>
#include <string_view>

#include "BLE_kovra/platform/linux/bus/BusFailures.h"
#include "BLE_kovra/platform/linux/bus/BusMessage.h"

namespace kovra {

// The connection that owns a well-known name at present. It serves to distinguish the signals of a service from forged
// ones.
//
// Any client may send a signal straight to another client's connection, and the bus passes it on. Such a signal bears
// the unique name of its real sender, which the bus itself writes. sd-bus cannot compare that unique name with the
// well-known name in a match, so it accepts the signal.
//
// The owner is updated inside sd-bus's dispatch, in the order of the messages. Create this object before adding a
// match. Then the owner is known for every signal that is sent after the match was added.
class NameOwner {
  public:
    NameOwner(sd_bus* bus, std::string name, BusFailures& failures);
    NameOwner(const NameOwner&) = delete;
    NameOwner& operator=(const NameOwner&) = delete;

    // Whether the owner has sent this message. False while the name has no owner.
    bool hasSent(sd_bus_message* message) const;

  private:
    static int changed(sd_bus_message* message, void* context, sd_bus_error* error);
    static int queried(sd_bus_message* answer, void* context, sd_bus_error* error);
    static int installed(sd_bus_message* answer, void* context, sd_bus_error* error);
    void check(int result) const;

    const std::string name_;
    BusFailures& failures_;
    std::string owner_;  // the unique name; empty if there is none
    BusSlot changes_;
    BusSlot query_;
};

}  // namespace kovra
