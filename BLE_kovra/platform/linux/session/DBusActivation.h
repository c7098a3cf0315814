#pragma once

#include <systemd/sd-bus.h>

#include <array>
#include <functional>
#include <string>
#include <utility>

#include "BLE_kovra/platform/linux/bus/BusConnection.h"

namespace kovra {

// The one thing that other programs can ask of this one by name, by freedesktop.org's interface for applications: to be
// activated, as when the user starts it. There are no files to open and no actions.
class DBusActivation {
  public:
    static constexpr const char* path = "/org/ble_kovra/BLEKovra";

    // Called from the queue, with the token by which a window may come to the front; empty where there is none.
    using Activated = std::function<void(const std::string& token)>;
    DBusActivation(MainQueue& queue, Activated activated) : queue_(queue), activated_(std::move(activated)) {}

    void exportOn(BusConnection& bus);
    void detach() { slot_.reset(); }

    // Activates the owner of the name, with the token that this process was started with. Waits only until the message
    // is sent.
    static void activate(BusConnection& bus, const char* busName);

    // That token, out of the environment: no program that this one starts is to take it for its own. Empty where there
    // is none.
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
