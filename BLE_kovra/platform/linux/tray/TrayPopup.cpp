#include "BLE_kovra/platform/linux/tray/TrayPopup.h"

#include <variant>

#include "BLE_kovra/platform/linux/desktop/XdgEnvironment.h"

namespace kovra {

bool TrayPopup::isNeededOn(const std::vector<std::string>& desktops) {
    // These name GNOME too, and have panels of their own.
    const bool isGnomeShell = anyOf(desktops, {"GNOME"}) && !anyOf(desktops, {"Budgie", "GNOME-Flashback"});
    return !isGnomeShell && !anyOf(desktops, {"KDE"});
}

TrayPopup::TrayPopup(MainQueue& queue, WindowProcess& window, TrayItem& item)
    : queue_(queue), window_(window), item_(item) {
    listening_ = window_.listen([this](const ToResident& message) {
        if (const auto* closed = std::get_if<MenuClosed>(&message)) receive(*closed);
    });
}

TrayPopup::~TrayPopup() { window_.release(); }

void TrayPopup::open(int x, int y) {
    using std::chrono::milliseconds;
    const auto requestedAt =
        std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now().time_since_epoch());
    queue_.async(lifetime_.guard([this, x, y, requestedAt] {
        lastRequest_ = requestedAt;
        window_.send(PopUpMenu{x, y, requestedAt, item_.shown().menu});
    }));
}

void TrayPopup::receive(const MenuClosed& closed) {
    if (closed.chosen) item_.choose(*closed.chosen);
    if (closed.asked == lastRequest_) window_.release();  // otherwise the menu was requested again in the meantime
}

}  // namespace kovra
