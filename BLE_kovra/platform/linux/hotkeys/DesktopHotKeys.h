#pragma once

#include <functional>
#include <memory>

#include "BLE_kovra/platform/HotKeyService.h"
#include "BLE_kovra/platform/linux/bus/SessionBus.h"
#include "BLE_kovra/platform/linux/desktop/XdgEnvironment.h"
#include "BLE_kovra/platform/linux/loop/Listeners.h"
#include "BLE_kovra/platform/linux/x11/XConnection.h"

namespace kovra {

// Hot keys as this desktop has them: taken from X by their place on the keyboard, or asked of the desktop's portal on
// Wayland, where only the desktop itself sees all keys; elsewhere every key is refused.
//
// Takes Control + Option + T; returns null for any other key. A press travels no further whatever the handlers answer:
// the desktop has given it to this program alone.
class DesktopHotKeys : public HotKeyService {
  public:
    static DesktopHotKeys onX(XConnection& connection);
    static DesktopHotKeys onPortal(SessionBus& bus);
    // `connection` is null where there is no X server.
    static DesktopHotKeys on(Desktop desktop, XConnection* connection, SessionBus& bus);

    std::unique_ptr<Reference> installHandler(Handler handler) override;
    std::unique_ptr<Reference> registerHotKey(const HotKey& hotKey) override;

  private:
    // Takes the key for as long as the reference lives; null where there are no hot keys.
    using Grab = std::function<std::unique_ptr<Reference>(const HotKey& hotKey, std::function<void()> pressed)>;
    explicit DesktopHotKeys(Grab grab) : grab_(std::move(grab)) {}

    const Grab grab_;
    Listeners<> handlers_;
};

}  // namespace kovra
