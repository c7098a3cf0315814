#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "BLE_kovra/platform/StatusBar.h"
#include "BLE_kovra/platform/linux/tray/TrayItem.h"

namespace kovra {

// What the user gets where no tray shows the icon. A missing function does nothing.
struct WithoutTray {
    std::function<void(const std::string& text)> announce;  // shows the text if no tray shows the icon
    std::function<std::string()> advice;                    // see StatusBar
};

// The tray of the desktop. Each function in `makers` creates one front for the item. The item may be destroyed before
// or after the tray.
class TrayStatusBar : public StatusBar {
  public:
    using MakeFront = std::function<std::unique_ptr<TrayFront>(TrayItem& item)>;

    TrayStatusBar(MainQueue& queue, std::vector<MakeFront> makers, WithoutTray without = {});

    // Ignores `length`, because a tray gives each icon the space that it needs.
    std::unique_ptr<StatusItem> statusItem(double length) override;
    std::string advice() const override { return without_.advice ? without_.advice() : ""; }

  private:
    MainQueue& queue_;
    const std::vector<MakeFront> makers_;
    const WithoutTray without_;
};

}  // namespace kovra
