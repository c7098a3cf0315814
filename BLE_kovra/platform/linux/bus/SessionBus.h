#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "BLE_kovra/platform/linux/bus/BusConnection.h"
#include "BLE_kovra/platform/linux/loop/Lifetime.h"
#include "BLE_kovra/platform/linux/loop/Listeners.h"

namespace kovra {

// The program's one connection to the bus of the user's session.
//
// When the bus dies it is connected to again once it is back at its address: after a second, then after ever longer
// pauses, up to half a minute. While connected nothing wakes the program. Without an address it stays disconnected.
class SessionBus {
  public:
    explicit SessionBus(SdEventLoop& loop);

    SdEventLoop& loop() const { return loop_; }
    // Null while there is no bus. A connection that is still being made keeps what is sent until it can go out.
    BusConnection* connection() { return bus() == nullptr ? nullptr : &*connection_; }
    sd_bus* bus() const { return connection_ ? connection_->bus() : nullptr; }

    // Receives the connection whenever it is up, and null whenever it is gone; from the queue. Whoever begins to listen
    // while it is up receives it too.
    using Listener = std::function<void(BusConnection*)>;
    [[nodiscard]] BusToken listen(Listener listener);

    const BusFailures& failures() const { return failures_; }

  private:
    void connect();
    // A negative error number where no connection was begun.
    int open();
    void connectLater();
    void isUp();
    void isGone();
    static int connected(sd_bus_message* message, void* context, sd_bus_error* error);

    SdEventLoop& loop_;
    const std::string address_;
    Listeners<BusConnection*> listeners_;
    BusFailures failures_;
    bool isUp_ = false;
    std::chrono::seconds pause_;  // before the next attempt
    BusSlot connectedSlot_;
    std::optional<BusConnection> connection_;
    Lifetime lifetime_;
};

}  // namespace kovra
