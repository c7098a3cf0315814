#include "BLE_kovra/platform/linux/tray/TrayPopup.h"

#include <variant>

namespace kovra {

TrayPopup::TrayPopup(MainQueue& queue, WindowProcess& window, TrayItem& item)
    : queue_(queue), window_(window), item_(item) {
    listening_ = window_.listen([this](const ToResident& message) {
        if (const auto* closed = std::get_if<MenuClosed>(&message)) receive(*closed);
    });
}

TrayPopup::~TrayPopup() { window_.release(); }

void TrayPopup::open(int x, int y) {
    using std::chrono::milliseconds;
    const auto asked = std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now().time_since_epoch());
    queue_.async(lifetime_.guard([this, x, y, asked] {
        asked_ = asked;
        window_.send(PopUpMenu{x, y, asked, item_.shown().menu});
    }));
}

void TrayPopup::receive(const MenuClosed& closed) {
    if (closed.chosen) item_.choose(*closed.chosen);
    if (closed.asked == asked_) window_.release();  // else it was opened again meanwhile
}

}  // namespace kovra
