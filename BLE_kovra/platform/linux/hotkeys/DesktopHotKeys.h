#pragma once

#include <functional>
#include <memory>
#include <string>

#include "BLE_kovra/platform/HotKeyService.h"
#include "BLE_kovra/platform/linux/bus/SessionBus.h"
#include "BLE_kovra/platform/linux/desktop/XdgEnvironment.h"
#include "BLE_kovra/platform/linux/loop/Listeners.h"
#include "BLE_kovra/platform/linux/x11/XConnection.h"

namespace kovra {

// The hot keys of this desktop. On X the key is grabbed by its position on the keyboard. On Wayland only the desktop
// receives all keys, so the key is requested from the desktop's portal. Without X and Wayland, every key is refused.
//
// Only Control + Option + T is available; registerHotKey() returns null for any other key. A press of a granted key
// reaches no other program, whatever the handlers return, because the key is reserved for this program.
class DesktopHotKeys : public HotKeyService {
  public:
    static DesktopHotKeys onX(XConnection& connection);
    static DesktopHotKeys onPortal(SessionBus& bus);
    // `connection` is null if there is no X server.
    static DesktopHotKeys on(Desktop desktop, XConnection* connection, SessionBus& bus);

    std::unique_ptr<Reference> installHandler(Handler handler) override;
    std::unique_ptr<Reference> registerHotKey(const HotKey& hotKey) override;
    HotKeyState state() const override { return state_; }

  private:
    // What a grab reports, from the queue, and what it tells the desktop.
    struct Reports {
        std::function<void()> pressed;
        std::function<void(HotKeyState)> changed;
        std::string description = {};
    };
    // A function that grabs the key for as long as the reference lives. It is null if there are no hot keys.
    using Grab = std::function<std::unique_ptr<Reference>(const HotKey& hotKey, Reports reports)>;
    explicit DesktopHotKeys(Grab grab) : grab_(std::move(grab)) {}

    void setState(HotKeyState state);

    const Grab grab_;
    HotKeyState state_;
    Listeners<> handlers_;
};

}  // namespace kovra
