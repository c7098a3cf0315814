#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "BLE_kovra/platform/StatusBar.h"
#include "BLE_kovra/platform/linux/tray/TrayItem.h"

namespace kovra {

// The desktop's tray. The item is given one front by each of the makers; it may die before the tray and outlive it.
class TrayStatusBar : public StatusBar {
  public:
    using MakeFront = std::function<std::unique_ptr<TrayFront>(TrayItem& item)>;

    TrayStatusBar(MainQueue& queue, std::vector<MakeFront> makers);

    // A tray gives a program's icon the room that it needs; another length means nothing here.
    std::unique_ptr<StatusItem> statusItem(double length) override;

  private:
    MainQueue& queue_;
    const std::vector<MakeFront> makers_;
};

}  // namespace kovra
