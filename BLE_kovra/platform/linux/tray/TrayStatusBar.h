#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "BLE_kovra/platform/StatusBar.h"
#include "BLE_kovra/platform/linux/tray/TrayItem.h"

namespace kovra {

// The tray of the desktop. Each function in `makers` creates one front for the item. The item may be destroyed before
// or after the tray.
class TrayStatusBar : public StatusBar {
  public:
    using MakeFront = std::function<std::unique_ptr<TrayFront>(TrayItem& item)>;

    TrayStatusBar(MainQueue& queue, std::vector<MakeFront> makers);

    // Ignores `length`, because a tray gives each icon the space that it needs.
    std::unique_ptr<StatusItem> statusItem(double length) override;

  private:
    MainQueue& queue_;
    const std::vector<MakeFront> makers_;
};

}  // namespace kovra
