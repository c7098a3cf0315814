#pragma once

#include "BLE_kovra/platform/linux/hotkeys/DesktopHotKeys.h"
#include "tests/platform/linux/hotkeys/StandInPortal.h"
#include "tests/platform/linux/loop/Turns.h"
#include "tests/support/linux/PrivateBus.h"

namespace kovra {

// The hot keys of a program in a Wayland session whose desktop has the portal.
struct PortalRig {
    PrivateBus daemon{"DBUS_SESSION_BUS_ADDRESS"};
    SdEventLoop loop;
    StandInPortal portal{loop};
    SessionBus bus{loop};
    DesktopHotKeys hotKeys = DesktopHotKeys::onPortal(bus);

    // Runs the loop until all messages sent so far, and all messages that they caused, have been received. Each round
    // calls the portal, or the bus if no portal is running. The reply arrives after all earlier messages.
    void settle() {
        ASSERT_TRUE(turnUntil(loop, [this] { return bus.bus() != nullptr && sd_bus_is_ready(bus.bus()) > 0; }));
        for (int round = 0; round < 12; ++round) {
            bool isAnswered = false;
            sd_bus_slot* slot = nullptr;
            ASSERT_GE(
                sd_bus_call_method_async(bus.bus(), &slot, portal.isRunning() ? portal.busName : "org.freedesktop.DBus",
                                         "/", "org.freedesktop.DBus.Peer", "Ping", answered, &isAnswered, ""),
                0);
            const BusSlot held(slot);
            ASSERT_TRUE(turnUntil(loop, [&] { return isAnswered; }));
        }
    }

  private:
    static int answered(sd_bus_message*, void* context, sd_bus_error*) {
        *static_cast<bool*>(context) = true;
        return 0;
    }
};

}  // namespace kovra
