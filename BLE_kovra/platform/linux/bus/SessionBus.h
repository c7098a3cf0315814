#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "BLE_kovra/platform/linux/bus/BusConnection.h"
#include "BLE_kovra/platform/linux/loop/Lifetime.h"
#include "BLE_kovra/platform/linux/loop/Listeners.h"

namespace kovra {

// The program's one connection to the session bus.
//
// After a failed attempt or a disconnection it tries the same address again after one second, then after pauses that
// double up to 30 seconds. While it is connected it causes no wake-ups. If there is no valid address, it stays
// disconnected.
class SessionBus {
  public:
    explicit SessionBus(SdEventLoop& loop);

    SdEventLoop& loop() const { return loop_; }
    // Returns the connection, or null while disconnected. Messages that are sent before the connection is established
    // are sent to the bus afterwards.
    BusConnection* connection() { return bus() == nullptr ? nullptr : &*connection_; }
    sd_bus* bus() const { return connection_ ? connection_->bus() : nullptr; }

    // A listener is called from the queue: with the connection once it is established, with null once it is lost. A
    // listener that is added while the bus is connected receives the connection too.
    using Listener = std::function<void(BusConnection*)>;
    [[nodiscard]] BusToken listen(Listener listener);

    const BusFailures& failures() const { return failures_; }

  private:
    void connect();
    // Returns a negative error number if no connection could be started.
    int open();
    void connectLater();
    void connectionEstablished();
    void connectionLost();
    static int connected(sd_bus_message* message, void* context, sd_bus_error* error);

    SdEventLoop& loop_;
    const std::string address_;
    Listeners<BusConnection*> listeners_;
    BusFailures failures_;
    bool isConnected_ = false;
    std::chrono::seconds pause_;
    BusSlot connectedSlot_;
    std::optional<BusConnection> connection_;
    Lifetime lifetime_;
};

}  // namespace kovra
