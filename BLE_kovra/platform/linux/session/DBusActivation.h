#pragma once

#include <systemd/sd-bus.h>

#include <array>
#include <functional>
#include <string>
#include <utility>

#include "BLE_kovra/platform/linux/bus/BusConnection.h"
#include "BLE_kovra/platform/linux/loop/Lifetime.h"

namespace kovra {

// Implements org.freedesktop.Application, with which other programs activate this one. The effect is that of a second
// start. Files and actions are not supported.
class DBusActivation {
  public:
    static constexpr const char* path = "/org/ble_kovra/BLEKovra";

    // Called from the queue with the token that allows a window to come to the front. It is empty if there is none.
    using Activated = std::function<void(const std::string& token)>;
    DBusActivation(MainQueue& queue, Activated activated) : queue_(queue), activated_(std::move(activated)) {}

    void exportOn(BusConnection& bus);
    void detach() { slot_.reset(); }

    // Activates the owner of the name and passes on the token that this process was started with. Blocks only until the
    // message is sent.
    static void activate(BusConnection& bus, const char* busName);

    // Returns the token of this process and removes it from the environment, so that no child process uses it. Empty if
    // there is none.
    static std::string takeOwnToken();

  private:
    static int received(sd_bus_message* call, void* context, sd_bus_error* error);
    static const std::array<sd_bus_vtable, 3> vtable;

    MainQueue& queue_;
    const Activated activated_;
    BusSlot slot_;
    Lifetime lifetime_;
};

}  // namespace kovra
