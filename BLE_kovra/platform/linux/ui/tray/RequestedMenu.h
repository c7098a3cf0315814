#pragma once

#include <chrono>
#include <cstddef>
#include <optional>

#include "BLE_kovra/platform/linux/ui/tray/TrayMenu.h"
#include "BLE_kovra/platform/linux/wire/Messages.h"

namespace kovra {

// The status item's menu where a desktop asks for it, which it does at each click of the icon: one click opens the
// menu, the next closes it. A request that is late opens nothing, since by then the user is about something else.
class RequestedMenu {
  public:
    // Sends MenuClosed once for each request, or for several that came while the menu was open.
    explicit RequestedMenu(SendToResident send);

    void show(const PopUpMenu& request);

  private:
    QMenu& widget() { return menu_.widget(); }
    void open(const PopUpMenu& request);
    void tellClosed();

    SendToResident send_;
    TrayMenu menu_{[this](std::size_t position) { chosen_ = position; }};
    std::chrono::milliseconds newest_{};  // when the newest request was asked
    std::chrono::milliseconds opened_{};  // when the menu was
    std::optional<std::size_t> chosen_;
};

}  // namespace kovra
