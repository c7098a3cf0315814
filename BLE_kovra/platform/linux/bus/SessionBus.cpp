#include "BLE_kovra/platform/linux/bus/SessionBus.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <utility>

#include "BLE_kovra/platform/linux/bus/BusClient.h"

namespace kovra {

namespace {

constexpr std::chrono::seconds shortestPause(1);
constexpr std::chrono::seconds longestPause(30);

// Escapes a value in a bus address. Letters, digits and -_/.\* are unchanged; any other byte becomes % and two
// hexadecimal digits.
std::string escaped(std::string_view path) {
    constexpr std::string_view digits = "0123456789abcdef";
    constexpr std::string_view plain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_/.\\*";
    std::string text;
    for (const char c : path) {
        if (plain.find(c) != std::string_view::npos) {
            text += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            text += {'%', digits[byte >> 4U], digits[byte & 0xFU]};
        }
    }
    return text;
}

// Removes the bus's GUID from its address, because a bus that restarts at this address has another GUID.
std::string withoutIdentity(std::string address) {
    constexpr std::string_view key = ",guid=";
    for (auto begin = address.find(key); begin != std::string::npos; begin = address.find(key)) {
        const auto end = address.find_first_of(",;", begin + key.size());
        address.erase(begin, end == std::string::npos ? end : end - begin);
    }
    return address;
}

// Returns $DBUS_SESSION_BUS_ADDRESS, or else the address of the socket `bus` in $XDG_RUNTIME_DIR. Returns an empty text
// if neither variable is set.
std::string standardAddress() {
    const char* named = std::getenv("DBUS_SESSION_BUS_ADDRESS");
    if (named != nullptr) return withoutIdentity(named);
    const char* folder = std::getenv("XDG_RUNTIME_DIR");
    return folder == nullptr ? "" : "unix:path=" + escaped(folder) + "/bus";
}

}  // namespace

SessionBus::SessionBus(SdEventLoop& loop) : loop_(loop), address_(standardAddress()), pause_(shortestPause) {
    connect();
}

BusToken SessionBus::listen(Listener listener) {
    BusToken token = listeners_.add(listener);
    if (isConnected_) {
        loop_.async(lifetime_.guard([this, listener = std::move(listener), weak = std::weak_ptr(token)] {
            if (isConnected_ && !weak.expired()) listener(connection());
        }));
    }
    return token;
}

void SessionBus::connect() {
    if (address_.empty()) return;
    const int result = open();
    if (result >= 0) return;
    failures_.add("session bus", result);
    if (result != -EINVAL) connectLater();  // retrying an invalid address is useless
}

int SessionBus::open() {
    BusHandle bus;
    int result = newBusClient(address_, bus);
    sd_bus* made = bus.get();
    if (result >= 0) result = sd_bus_set_trusted(made, 1);  // the bus admits only the user's own programs
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

void SessionBus::connectLater() {
    connectedSlot_.reset();
    connection_.reset();
    loop_.asyncAfter(pause_, lifetime_.guard([this] { connect(); }));
    pause_ = std::min(pause_ * 2, longestPause);
}

int SessionBus::connected(sd_bus_message*, void* context, sd_bus_error*) {
    auto* self = static_cast<SessionBus*>(context);
    if (self != nullptr) self->loop_.async(self->lifetime_.guard([self] { self->connectionEstablished(); }));
    return 0;
}

void SessionBus::connectionEstablished() {
    if (bus() == nullptr) return;
    isConnected_ = true;
    pause_ = shortestPause;
    listeners_.call(connection());
}

void SessionBus::connectionLost() {
    const bool wasConnected = std::exchange(isConnected_, false);
    connectLater();
    if (wasConnected) listeners_.call(nullptr);
}

}  // namespace kovra
