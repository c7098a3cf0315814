#pragma once

#include <systemd/sd-bus.h>

#include <functional>
#include <string>

#include "BLE_kovra/platform/linux/bus/BusMessage.h"

namespace kovra::control {

// The reply to a call that this program has waited for.
struct BusReply {
    enum class Kind {
        answered,
        refused,  // an error reply; `error` has its name
        silent    // no reply in time, or the bus has disconnected
    };
    Kind kind = Kind::silent;
    std::string error;    // the name of the error
    std::string message;  // its text
    BusMessage values;    // of an answer
};

// Connects to the bus of this user, or to that of the system. Returns 0 or a negative error number. Does not wait until
// the bus has accepted the connection.
int openUserBus(BusHandle& bus);
int openSystemBus(BusHandle& bus);

// Makes a call without starting its destination. Waits for the reply for at most two seconds.
BusReply ask(sd_bus* bus, const char* destination, const char* path, const char* interface, const char* member,
             const std::function<void(BusWriter&)>& write);

// Reads all properties of an interface.
BusReply askForProperties(sd_bus* bus, const char* destination, const char* path, const char* interface);

}  // namespace kovra::control
