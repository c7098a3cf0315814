#pragma once

#include <systemd/sd-bus.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "BLE_kovra/platform/linux/bus/BusFailures.h"
#include "BLE_kovra/platform/linux/bus/BusMessage.h"

namespace kovra {

// The connection that owns a well-known name at present. It is used to recognize forged signals.
//
// Any client may send a signal straight to another client's connection, and the bus passes it on. Such a signal
// contains the unique name of its real sender, which the bus itself writes. A match of sd-bus cannot compare this
// unique name with the well-known name, so it accepts the signal.
//
// The owner is requested from the bus only when ifSent() is first called, because most services send no signal for
// hours. From then on the owner is updated inside sd-bus's dispatch, in the order of the messages.
class NameOwner {
  public:
    NameOwner(sd_bus* bus, std::string name, BusFailures& failures);
    NameOwner(const NameOwner&) = delete;
    NameOwner& operator=(const NameOwner&) = delete;

    // Calls the function inside sd-bus's dispatch if the owner has sent this message: at once if the owner is known,
    // otherwise when the bus has replied. Never calls it if the name has no owner, or after this object is destroyed.
    void ifSent(sd_bus_message* message, std::function<void()> then);

  private:
    struct Waiting {
        std::string sender;
        std::function<void()> then;
    };

    static int changed(sd_bus_message* message, void* context, sd_bus_error* error);
    static int queried(sd_bus_message* answer, void* context, sd_bus_error* error);
    static int installed(sd_bus_message* answer, void* context, sd_bus_error* error);
    void ask();
    bool isOwner(std::string_view sender) const { return !owner_.empty() && sender == owner_; }
    void check(int result) const;

    sd_bus* const bus_;
    const std::string name_;
    BusFailures& failures_;
    std::string owner_;  // the unique name; empty if there is none
    bool isKnown_ = false;
    std::vector<Waiting> waiting_;  // until the bus has replied, in the order of the messages
    BusSlot changes_;
    BusSlot query_;
};

}  // namespace kovra
