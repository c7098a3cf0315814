#include "BLE_kovra/platform/linux/tray/TrayStatusBar.h"

#include <utility>

namespace kovra {

TrayStatusBar::TrayStatusBar(MainQueue& queue, std::vector<MakeFront> makers, WithoutTray without)
    : queue_(queue), makers_(std::move(makers)), without_(std::move(without)) {}

std::unique_ptr<StatusItem> TrayStatusBar::statusItem(double) {
    auto item = std::make_unique<TrayItem>(queue_, without_.announce);
    for (const MakeFront& make : makers_) item->add(make(*item));
    return item;
}

}  // namespace kovra
