#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "BLE_kovra/platform/linux/bus/BusConnection.h"

namespace kovra {

// The program's one connection to the bus of the user's session.
//
// When the bus dies it is connected to again once it is back at its address: tried after a second, then ever more
// seldom, down to twice a minute. While connected nothing wakes the program. Without an address it stays gone.
class SessionBus {
  public:
    explicit SessionBus(SdEventLoop& loop);

    SdEventLoop& loop() const { return loop_; }
    // Null while the bus is gone. A connection that is still being made keeps what is sent until it can go out.
    sd_bus* bus() const { return connection_ ? connection_->bus() : nullptr; }

    // Who is told, from the queue and in turn, that the bus is up and that it is gone: for as long as it lives. Whoever
    // begins to listen while the bus is up is told so at once.
    struct Listener {
        std::function<void(sd_bus*)> up;
        std::function<void()> gone;
        bool knowsItIsUp = false;
    };
    [[nodiscard]] std::shared_ptr<Listener> listen(std::function<void(sd_bus*)> up, std::function<void()> gone);

  private:
    void connect();
    // A negative error number where no connection was begun.
    int open();
    void connectLater();
    void isUp();
    void isGone();
    void tell();
    static int connected(sd_bus_message* message, void* context, sd_bus_error* error);

    SdEventLoop& loop_;
    const std::string address_;
    std::vector<std::weak_ptr<Listener>> listeners_;
    bool isUp_ = false;
    std::chrono::seconds pause_;  // before the next attempt
    BusSlot connectedSlot_;
    std::optional<BusConnection> connection_;
    std::shared_ptr<SessionBus*> self_;  // how a queued block learns that this is no more
};

}  // namespace kovra
