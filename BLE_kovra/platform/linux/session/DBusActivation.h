#pragma once

#include <systemd/sd-bus.h>

#include <array>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "BLE_kovra/platform/linux/bus/BusConnection.h"

namespace kovra {

// The one thing that other programs can ask of this one by name, by freedesktop.org's interface for applications: to be
// activated, as when the user starts it. There are no files to open and no actions.
class DBusActivation {
  public:
    static constexpr const char* path = "/org/ble_kovra/BLEKovra";

    // Told from the queue, with the token by which a window may come to the front; empty where there is none.
    using Activated = std::function<void(std::string token)>;
    DBusActivation(MainQueue& queue, Activated activated)
        : queue_(queue), activated_(std::make_shared<Activated>(std::move(activated))) {}

    void exportOn(sd_bus* bus);
    void letGoOfBus() { slot_.reset(); }

    // Asks whoever holds the name, with the token that this process was started with, and waits for nothing but the
    // message's way out.
    static void activate(sd_bus* bus, const char* busName);

    // That token, out of the environment: no program that this one starts is to take it for its own. Empty where there
    // is none.
    static std::string takeOwnToken();

  private:
    static int asked(sd_bus_message* call, void* context, sd_bus_error* error);
    static const std::array<sd_bus_vtable, 3> vtable;

    MainQueue& queue_;
    std::shared_ptr<Activated> activated_;
    BusSlot slot_;
};

}  // namespace kovra
