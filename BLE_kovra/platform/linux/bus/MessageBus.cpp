#include "BLE_kovra/platform/linux/bus/MessageBus.h"

#include <algorithm>
#include <cerrno>
#include <memory>
#include <string_view>
#include <utility>

#include "BLE_kovra/platform/linux/bus/BusClient.h"

namespace kovra {

namespace {

constexpr std::chrono::seconds shortestPause(1);
constexpr std::chrono::seconds longestPause(30);

// Removes the bus's GUID from its address, because a bus that restarts at this address has another GUID.
std::string withoutIdentity(std::string address) {
    constexpr std::string_view key = ",guid=";
    for (auto begin = address.find(key); begin != std::string::npos; begin = address.find(key)) {
        const auto end = address.find_first_of(",;", begin + key.size());
        address.erase(begin, end == std::string::npos ? end : end - begin);
    }
    return address;
}

}  // namespace

MessageBus::MessageBus(SdEventLoop& loop, Kind kind)
    : loop_(loop),
      kind_{std::move(kind.name), withoutIdentity(std::move(kind.address)), kind.isTrusted, kind.mayComeLater},
      mayRetry_(kind_.mayComeLater),
      pause_(shortestPause) {
    connect();
}

BusToken MessageBus::listen(Listener listener) {
    BusToken token = listeners_.add(listener);
    if (isConnected_) {
        loop_.async(lifetime_.guard([this, listener = std::move(listener), weak = std::weak_ptr(token)] {
            if (isConnected_ && !weak.expired()) listener(connection());
        }));
    }
    return token;
}

void MessageBus::connect() {
    if (kind_.address.empty()) return;
    const int result = open();
    if (result >= 0) return;
    failures_.add(kind_.name, result);
    const bool isUseless = result == -EINVAL || (result == -ENOENT && !mayRetry_);
    if (!isUseless) connectLater();
}

int MessageBus::open() {
    BusHandle bus;
    int result = newBusClient(kind_.address, bus);
    sd_bus* made = bus.get();
    if (result >= 0) result = sd_bus_set_trusted(made, kind_.isTrusted ? 1 : 0);
    if (result >= 0) result = sd_bus_set_connected_signal(made, 1);
    if (result >= 0) result = sd_bus_start(made);
    if (result < 0) return result;
    sd_bus_slot* slot = nullptr;
    // sd-bus generates the signal Connected itself once the bus has answered; the bus never sends that signal.
    result = sd_bus_match_signal(made, &slot, "org.freedesktop.DBus.Local", "/org/freedesktop/DBus/Local",
                                 "org.freedesktop.DBus.Local", "Connected", connected, this);
    if (result < 0) return result;
    connectedSlot_.reset(slot);
    connection_.emplace(loop_, std::move(bus), failures_, [this] { connectionLost(); });
    return connection_->bus() == nullptr ? -ENOMEM : 0;
}

void MessageBus::connectLater() {
    connectedSlot_.reset();
    connection_.reset();
    loop_.asyncAfter(pause_, lifetime_.guard([this] { connect(); }));
    pause_ = std::min(pause_ * 2, longestPause);
}

int MessageBus::connected(sd_bus_message*, void* context, sd_bus_error*) {
    auto* self = static_cast<MessageBus*>(context);
    if (self != nullptr) self->loop_.async(self->lifetime_.guard([self] { self->connectionEstablished(); }));
    return 0;
}

void MessageBus::connectionEstablished() {
    if (bus() == nullptr) return;
    isConnected_ = mayRetry_ = true;
    pause_ = shortestPause;
    listeners_.call(connection());
}

void MessageBus::connectionLost() {
    isConnected_ = false;
    connectLater();
    listeners_.call(nullptr);
}

}  // namespace kovra
