#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "BLE_kovra/platform/linux/bus/BusConnection.h"
#include "BLE_kovra/platform/linux/loop/Lifetime.h"
#include "BLE_kovra/platform/linux/loop/Listeners.h"

namespace kovra {

// The program's one connection to a message bus.
//
// After a failed attempt or a disconnection it tries the same address again after one second, then after pauses that
// double up to 30 seconds. While it is connected it causes no wake-ups. If there is no valid address, it stays
// disconnected.
class MessageBus {
  public:
    MessageBus(const MessageBus&) = delete;
    MessageBus& operator=(const MessageBus&) = delete;

    SdEventLoop& loop() const { return loop_; }
    // Returns the connection, or null while disconnected. Messages that are sent before the connection is established
    // are sent to the bus afterwards.
    BusConnection* connection() { return bus() == nullptr ? nullptr : &*connection_; }
    sd_bus* bus() const { return connection_ ? connection_->bus() : nullptr; }

    // A listener is called from the queue: with the connection once it is established, and with null once it is lost,
    // also if it had not been established yet. A listener that is added while the bus is connected receives the
    // connection too.
    using Listener = std::function<void(BusConnection*)>;
    [[nodiscard]] BusToken listen(Listener listener);

    const BusFailures& failures() const { return failures_; }

  protected:
    struct Kind {
        std::string name;     // for the list of failures
        std::string address;  // empty if there is none
        bool isTrusted;       // whether the bus admits only the user's own programs
        bool mayComeLater;    // whether it may be there later if its socket is missing at first
    };

    MessageBus(SdEventLoop& loop, Kind kind);
    ~MessageBus() = default;

  private:
    void connect();
    // Returns a negative error number if no connection could be started.
    int open();
    void connectLater();
    void connectionEstablished();
    void connectionLost();
    static int connected(sd_bus_message* message, void* context, sd_bus_error* error);

    SdEventLoop& loop_;
    const Kind kind_;
    Listeners<BusConnection*> listeners_;
    BusFailures failures_;
    bool isConnected_ = false;
    bool mayRetry_;  // if the socket is missing
    std::chrono::seconds pause_;
    BusSlot connectedSlot_;
    std::optional<BusConnection> connection_;
    Lifetime lifetime_;
};

}  // namespace kovra
