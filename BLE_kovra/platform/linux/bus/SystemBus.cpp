#include "BLE_kovra/platform/linux/bus/SystemBus.h"

#include <cstdlib>
#include <string>

namespace kovra {

namespace {

std::string standardSystemAddress() {
    const char* named = std::getenv("DBUS_SYSTEM_BUS_ADDRESS");
    return named == nullptr ? "unix:path=/run/dbus/system_bus_socket" : named;
}

}  // namespace

SystemBus::SystemBus(SdEventLoop& loop)
    : MessageBus(
          loop, {.name = "system bus", .address = standardSystemAddress(), .isTrusted = false, .mayComeLater = false}) {
}

}  // namespace kovra
