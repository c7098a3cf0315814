#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "BLE_kovra/platform/linux/bus/SessionBus.h"
#include "BLE_kovra/platform/linux/start/TrayPresence.h"

namespace kovra {

// Shows the status to the user who has no icon to look at, as a notification of the desktop
// (org.freedesktop.Notifications). The notification is transient, so the desktop does not keep it in a list. Each one
// replaces the one before, if the same service has shown it. Where a tray has the icon, nothing is shown.
class StatusNotice {
  public:
    StatusNotice(SessionBus& bus, TrayPresence tray) : bus_(bus), tray_(tray) {}

    // Waits for nothing. While the service has not replied to an earlier text, only the newest text waits.
    void show(const std::string& text);

  private:
    void busChanged(BusConnection* connection);
    void send(const std::string& text);
    void received(sd_bus_message* answer);

    SessionBus& bus_;
    const TrayPresence tray_;
    std::uint32_t last_ = 0;  // the service's number of the last notification; 0 for none
    std::optional<std::string> next_;
    BusToken call_;  // null while no reply is expected
    BusToken owner_;
    BusToken listening_;
};

}  // namespace kovra
