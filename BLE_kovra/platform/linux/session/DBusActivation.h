#pragma once

#include <systemd/sd-bus.h>

#include <array>
#include <chrono>
#include <functional>
#include <string>
#include <utility>

#include "BLE_kovra/platform/Application.h"
#include "BLE_kovra/platform/linux/bus/BusConnection.h"
#include "BLE_kovra/platform/linux/loop/Lifetime.h"

namespace kovra {

// The program's object on the session bus. It implements the methods Activate and ActivateAction of
// org.freedesktop.Application, which other programs call. The effect of Activate is that of a second start. The actions
// are those of ApplicationAction, under the same names, and have no parameters. Files are not supported. Only programs
// that the user's session bus admits can call these methods: the object is exported on no other bus.
//
// The object also has an interface of this program's own, with the method Version. A second start calls Version to
// check whether the owner of the name is this program. Older versions of the program lack that interface. They are
// recognized by their object, which has only the method Activate.
class DBusActivation {
  public:
    static constexpr const char* path = "/org/ble_kovra/BLEKovra";
    static constexpr const char* ownInterface = "org.ble_kovra.BLEKovra";
    // How long activate() waits for replies. An instance that is not stopped replies within milliseconds.
    static constexpr std::chrono::seconds timeout{1};

    // Called from the queue when this program is activated. `token` allows a window to come to the front; it is empty
    // if there is none.
    using Activated = std::function<void(const std::string& token)>;
    // Called from the queue when another program asks for an action.
    using Requested = std::function<void(ApplicationAction action, const std::string& token)>;
    DBusActivation(MainQueue& queue, Activated activated, Requested requested)
        : queue_(queue), activated_(std::move(activated)), requested_(std::move(requested)) {}

    void exportOn(BusConnection& bus);
    void detach() {
        activation_.reset();
        own_.reset();
    }

    enum class Owner {
        ours,     // the owner has replied as this program does
        foreign,  // the owner has replied, but as another program
        silent    // the owner has not replied within `timeout`
    };
    // Activates the owner of the name, and passes it the token that this process was started with. Waits for the reply
    // without running the event loop. If the owner is stopped, it receives the call when it continues.
    static Owner activate(sd_bus* bus, const char* busName);

    // Returns the token that this process was started with, and removes it from the environment, so that no child
    // process uses it. Returns an empty text if there is none.
    static std::string takeOwnToken();

  private:
    static int received(sd_bus_message* call, void* context, sd_bus_error* error);
    static int receivedAction(sd_bus_message* call, void* context, sd_bus_error* error);
    static int askedForVersion(sd_bus_message* call, void* context, sd_bus_error* error);
    static const std::array<sd_bus_vtable, 4> activationTable;
    static const std::array<sd_bus_vtable, 3> ownTable;

    MainQueue& queue_;
    const Activated activated_;
    const Requested requested_;
    BusSlot activation_;
    BusSlot own_;
    Lifetime lifetime_;
};

}  // namespace kovra
