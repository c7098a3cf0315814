#pragma once

#include <optional>

#include "BLE_kovra/platform/linux/bus/BusConnection.h"

namespace kovra {

// The program's one connection to the bus of the machine's services. Where there is none, or once it is gone, it stays
// so: the desktop does not outlive that bus either.
class SystemBus {
  public:
    explicit SystemBus(SdEventLoop& loop) : loop_(loop) {
        sd_bus* opened = nullptr;
        if (sd_bus_open_system(&opened) >= 0) connection_.emplace(loop, BusHandle(opened));
    }

    SdEventLoop& loop() const { return loop_; }
    // Null where there is none. A connection that is still being made keeps what is sent until it can go out.
    sd_bus* bus() const { return connection_ ? connection_->bus() : nullptr; }

  private:
    SdEventLoop& loop_;
    std::optional<BusConnection> connection_;
};

}  // namespace kovra
