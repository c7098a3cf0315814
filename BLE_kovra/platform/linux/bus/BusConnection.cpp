#include "BLE_kovra/platform/linux/bus/BusConnection.h"

#include <memory>
#include <utility>

namespace kovra {

BusConnection::BusConnection(SdEventLoop& loop, BusHandle bus)
    : loop_(loop), bus_(std::move(bus)), self_(std::make_shared<BusConnection*>(this)) {
    sd_bus_slot* slot = nullptr;
    // A signal that the library makes itself when the connection ends; it never travels over the bus.
    sd_bus_match_signal(bus_.get(), &slot, "org.freedesktop.DBus.Local", "/org/freedesktop/DBus/Local",
                        "org.freedesktop.DBus.Local", "Disconnected", disconnected, this);
    disconnectedSlot_.reset(slot);
    if (sd_bus_attach_event(bus_.get(), loop_.event(), SD_EVENT_PRIORITY_NORMAL) < 0) bus_.reset();
}

int BusConnection::disconnected(sd_bus_message*, void* context, sd_bus_error*) {
    auto* connection = static_cast<BusConnection*>(context);
    if (connection == nullptr) return 0;
    connection->loop_.async([weak = std::weak_ptr(connection->self_)] {
        const auto self = weak.lock();
        if (!self) return;
        (*self)->disconnectedSlot_.reset();
        (*self)->bus_.reset();
        if (const auto onGone = (*self)->onGone) onGone();
    });
    return 0;
}

}  // namespace kovra
