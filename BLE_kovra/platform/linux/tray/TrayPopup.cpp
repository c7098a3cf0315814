#include "BLE_kovra/platform/linux/tray/TrayPopup.h"

#include <variant>

namespace kovra {

TrayPopup::TrayPopup(MainQueue& queue, WindowProcess& window, TrayItem& item)
    : queue_(queue), window_(window), item_(item), self_(std::make_shared<TrayPopup*>(this)) {
    listening_ = window_.listen([this](const ToResident& told) {
        if (const auto* closed = std::get_if<MenuClosed>(&told)) hear(*closed);
    });
}

TrayPopup::~TrayPopup() { window_.release(); }

void TrayPopup::ask(int x, int y) {
    using std::chrono::milliseconds;
    const auto asked = std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now().time_since_epoch());
    queue_.async([weak = std::weak_ptr(self_), x, y, asked] {
        const auto self = weak.lock();
        if (!self) return;
        TrayPopup& popup = **self;
        popup.asked_ = asked;
        popup.window_.tell(PopUpMenu{x, y, asked, popup.item_.told().menu});
    });
}

void TrayPopup::hear(const MenuClosed& closed) {
    if (closed.chosen) item_.choose(*closed.chosen);
    if (closed.asked == asked_) window_.release();  // else it was asked for again meanwhile
}

}  // namespace kovra
