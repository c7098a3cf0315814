#pragma once

#include <chrono>
#include <cstddef>
#include <optional>

#include "BLE_kovra/platform/linux/ui/tray/TrayMenu.h"
#include "BLE_kovra/platform/linux/wire/Messages.h"

namespace kovra {

// The status item's menu for desktops that request it at each click on the icon. One click opens the menu, the next
// closes it. A request that is older than two seconds opens nothing, because the user may be doing something else by
// then.
class RequestedMenu {
  public:
    // Sends MenuClosed when the menu closes, and for a request that opens nothing.
    explicit RequestedMenu(SendToResident send);

    void show(const PopUpMenu& request);

  private:
    QMenu& widget() { return menu_.widget(); }
    void open(const PopUpMenu& request);
    void sendClosed();

    SendToResident send_;
    TrayMenu menu_{[this](std::size_t position) { chosen_ = position; }};
    std::chrono::milliseconds newest_{};  // time of the newest request
    std::chrono::milliseconds opened_{};  // time when the menu opened
    std::optional<std::size_t> chosen_;
};

}  // namespace kovra
