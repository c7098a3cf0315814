#pragma once

#include <cstdlib>
#include <optional>
#include <string>
#include <utility>

#include "BLE_kovra/platform/linux/bus/BusClient.h"
#include "BLE_kovra/platform/linux/bus/BusConnection.h"

namespace kovra {

// The program's one connection to the system bus. It is not established again after a disconnection, because the
// desktop session ends with the system bus, too.
class SystemBus {
  public:
    explicit SystemBus(SdEventLoop& loop) : loop_(loop) {
        BusHandle client;
        int result = newBusClient(address(), client);
        if (result >= 0) result = sd_bus_start(client.get());
        if (result >= 0)
            connection_.emplace(loop, std::move(client), failures_);
        else
            failures_.add("system bus", result);
    }

    SdEventLoop& loop() const { return loop_; }
    // Returns the connection. Returns null if there is no system bus, or after it has disconnected. Messages that are
    // sent before the connection is established are sent to the bus afterwards.
    BusConnection* connection() { return bus() == nullptr ? nullptr : &*connection_; }
    sd_bus* bus() const { return connection_ ? connection_->bus() : nullptr; }

    const BusFailures& failures() const { return failures_; }

  private:
    static std::string address() {
        const char* set = std::getenv("DBUS_SYSTEM_BUS_ADDRESS");
        return set == nullptr ? "unix:path=/run/dbus/system_bus_socket" : set;
    }

    SdEventLoop& loop_;
    BusFailures failures_;
    std::optional<BusConnection> connection_;
};

}  // namespace kovra
