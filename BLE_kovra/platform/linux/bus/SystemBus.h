#pragma once

#include <optional>

#include "BLE_kovra/platform/linux/bus/BusConnection.h"

namespace kovra {

// The program's one connection to the system bus. It is not established again after a disconnection, because the
// desktop session ends with the system bus, too.
class SystemBus {
  public:
    explicit SystemBus(SdEventLoop& loop) : loop_(loop) {
        sd_bus* opened = nullptr;
        const int result = sd_bus_open_system(&opened);
        if (result >= 0)
            connection_.emplace(loop, BusHandle(opened), failures_);
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
    SdEventLoop& loop_;
    BusFailures failures_;
    std::optional<BusConnection> connection_;
};

}  // namespace kovra
