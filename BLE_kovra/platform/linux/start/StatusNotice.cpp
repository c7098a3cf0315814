#include "BLE_kovra/platform/linux/start/StatusNotice.h"

#include <systemd/sd-bus.h>

#include <utility>

namespace kovra {

void StatusNotice::show(const std::string& text) {
    if (tray_.hasIcon()) return;
    if (!listening_) {
        listening_ = bus_.listen([this](BusConnection* connection) {
            if (connection == nullptr) call_.reset();  // no reply will arrive
        });
    }
    if (call_)
        next_ = text;
    else
        send(text);
}

void StatusNotice::send(const std::string& text) {
    BusConnection* bus = bus_.connection();
    if (bus == nullptr) return;
    constexpr const char* name = "org.freedesktop.Notifications";
    call_ = bus->call(
        {name, "/org/freedesktop/Notifications", name, "Notify", true},
        [&](BusWriter& arguments) {
            constexpr std::int32_t asTheDesktopDecides = -1;
            arguments.text("BLE-kovra").natural(last_).text("ble-kovra").text(text).text("");
            arguments.openArray("s").close();
            arguments.openArray("{sv}").entry("desktop-entry", "org.ble_kovra.BLEKovra");
            arguments.openEntry("sv").text("transient").openVariant("b").boolean(true).close().close();
            arguments.close().integer(asTheDesktopDecides);
        },
        [this](sd_bus_message* answer) { received(answer); });
}

void StatusNotice::received(sd_bus_message* answer) {
    call_.reset();
    const bool isError = sd_bus_message_is_method_error(answer, nullptr) > 0;
    if (isError || sd_bus_message_read(answer, "u", &last_) <= 0) last_ = 0;
    if (const auto next = std::exchange(next_, std::nullopt)) send(*next);
}

}  // namespace kovra
