#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "BLE_kovra/platform/MainQueue.h"
#include "BLE_kovra/platform/linux/loop/Lifetime.h"
#include "BLE_kovra/platform/linux/tray/TrayItem.h"
#include "BLE_kovra/platform/linux/windows/WindowProcess.h"

namespace kovra {

// The item's menu, which the window process opens when a desktop requests it. This class is used only on X11, where
// programs may position their windows.
class TrayPopup {
  public:
    // Returns whether the desktop with these names may need the item to open its menu. Plasma and GNOME Shell open the
    // menu themselves, in their own look. But they report some clicks to the item first (Plasma 5 the left ones,
    // GNOME's AppIndicator extension the double ones), and open nothing if the item takes them.
    static bool isNeededOn(const std::vector<std::string>& desktops);

    TrayPopup(MainQueue& queue, WindowProcess& window, TrayItem& item);
    ~TrayPopup();
    TrayPopup(const TrayPopup&) = delete;
    TrayPopup& operator=(const TrayPopup&) = delete;

    // Opens the menu from the queue, with its current contents. If the menu is open, closes it.
    void open(int x, int y);

  private:
    void receive(const MenuClosed& closed);

    MainQueue& queue_;
    WindowProcess& window_;
    TrayItem& item_;
    std::chrono::milliseconds lastRequest_{};
    WindowProcess::Messages::Token listening_;
    Lifetime lifetime_;
};

}  // namespace kovra
