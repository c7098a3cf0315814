#include "BLE_kovra/platform/linux/start/StatusNotice.h"

#include <systemd/sd-bus.h>

#include <string_view>
#include <utility>

namespace kovra {

namespace {

constexpr const char* name = "org.freedesktop.Notifications";

}  // namespace

void StatusNotice::show(const std::string& text) {
    if (tray_.hasIcon()) return;
    if (!listening_) listening_ = bus_.listen([this](BusConnection* connection) { busChanged(connection); });
    if (call_)
        next_ = text;
    else
        send(text);
}

// A service knows only the numbers that it has given itself. Another one may have given the same to another program.
void StatusNotice::busChanged(BusConnection* connection) {
    if (connection != nullptr) {
        owner_ = connection->watchOwner(name, [this](std::string_view, std::string_view) { last_ = 0; });
        return;
    }
    owner_.reset();
    call_.reset();  // no reply will arrive
    next_.reset();
    last_ = 0;
}

void StatusNotice::send(const std::string& text) {
    BusConnection* bus = bus_.connection();
    if (bus == nullptr) return;
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
