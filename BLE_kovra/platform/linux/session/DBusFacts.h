#pragma once

#include <systemd/sd-bus.h>

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "BLE_kovra/platform/Application.h"
#include "BLE_kovra/platform/HotKeyService.h"
#include "BLE_kovra/platform/linux/bus/SessionBus.h"

namespace kovra {

// What the application knows about itself, as read-only properties of its object on the session bus. They belong to
// the interface of DBusActivation. ble-kovractl reads them.
//
// The bus asks for them when a client reads them. They are computed only then, and their changes are not signalled. So
// they cost nothing while nobody reads them.
//
//   Version s             Enabled b: the switch       Mode s: "always" or "onDevice"
//   Muting b: the decision                            LastWritten s: "on", "off", or "" if nothing was written
//   Chosen a(ss): name and "connected", "inGrace" or "away"
//   HotKey s: "ours", "taken" by another program, "onRequest" if the user can be asked for it, or "unavailable"
//   Combination s: such as "Ctrl+Alt+T"             Tray s: "panel", "embedded" (X11) or "none"
//   SessionBusFailures as, SystemBusFailures as: see BusFailures
class DBusFacts {
  public:
    // Where the facts come from. The functions are called inside sd-bus's dispatch. They must not change anything.
    struct Sources {
        std::function<std::optional<ApplicationFacts>()> application;
        std::function<HotKeyState()> hotKey;
        std::function<std::string()> tray;  // "panel", "embedded" or "none"
        const BusFailures* sessionBus = nullptr;
        const BusFailures* systemBus = nullptr;
    };

    DBusFacts(SessionBus& bus, Sources sources);
    DBusFacts(const DBusFacts&) = delete;
    DBusFacts& operator=(const DBusFacts&) = delete;

  private:
    static int read(sd_bus* bus, const char* path, const char* interface, const char* property, sd_bus_message* reply,
                    void* context, sd_bus_error* error);
    static const std::array<sd_bus_vtable, 13> table;
    void exportOn(BusConnection* bus);

    const Sources sources_;
    BusSlot object_;
    BusToken listening_;
};

}  // namespace kovra
