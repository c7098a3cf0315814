#pragma once

#include <systemd/sd-bus.h>

#include <array>
#include <chrono>
#include <functional>
#include <string>
#include <utility>

#include "BLE_kovra/platform/linux/bus/BusConnection.h"
#include "BLE_kovra/platform/linux/loop/Lifetime.h"

namespace kovra {

// The program's object on the session bus. It implements org.freedesktop.Application, through which other programs
// activate this one. The effect is that of a second start. Files and actions are not supported. An interface of this
// program's own has the method Version, by which a second start recognizes that the owner of the name is this program.
// Older versions lack that interface. Their object has the method Activate and no other.
class DBusActivation {
  public:
    static constexpr const char* path = "/org/ble_kovra/BLEKovra";
    static constexpr const char* ownInterface = "org.ble_kovra.BLEKovra";
    // How long activate() waits. An instance that is not stopped answers within milliseconds.
    static constexpr std::chrono::seconds timeout{1};

    // Called from the queue with the token that allows a window to come to the front. It is empty if there is none.
    using Activated = std::function<void(const std::string& token)>;
    DBusActivation(MainQueue& queue, Activated activated) : queue_(queue), activated_(std::move(activated)) {}

    void exportOn(BusConnection& bus);
    void detach() {
        activation_.reset();
        own_.reset();
    }

    enum class Owner {
        ours,     // it has answered as this program does
        foreign,  // it has answered, but as another program
        silent    // it has not answered within `timeout`
    };
    // Activates the owner of the name and passes on the token that this process was started with. Waits for the answer
    // without running the event loop. An owner that is stopped receives the call when it continues.
    static Owner activate(sd_bus* bus, const char* busName);

    // Returns the token of this process and removes it from the environment, so that no child process uses it. Empty if
    // there is none.
    static std::string takeOwnToken();

  private:
    static int received(sd_bus_message* call, void* context, sd_bus_error* error);
    static int askedForVersion(sd_bus_message* call, void* context, sd_bus_error* error);
    static const std::array<sd_bus_vtable, 3> activationTable;
    static const std::array<sd_bus_vtable, 3> ownTable;

    MainQueue& queue_;
    const Activated activated_;
    BusSlot activation_;
    BusSlot own_;
    Lifetime lifetime_;
};

}  // namespace kovra
