#pragma once

#include <chrono>

#include "BLE_kovra/platform/MainQueue.h"
#include "BLE_kovra/platform/linux/loop/Lifetime.h"
#include "BLE_kovra/platform/linux/tray/TrayItem.h"
#include "BLE_kovra/platform/linux/windows/WindowProcess.h"

namespace kovra {

// The item's menu, opened by the window process where a desktop asks for it, on a screen that lets programs place their
// windows.
class TrayPopup {
  public:
    TrayPopup(MainQueue& queue, WindowProcess& window, TrayItem& item);
    ~TrayPopup();
    TrayPopup(const TrayPopup&) = delete;
    TrayPopup& operator=(const TrayPopup&) = delete;

    // From the queue the menu opens as the item then has it; where it is open it closes.
    void open(int x, int y);

  private:
    void receive(const MenuClosed& closed);

    MainQueue& queue_;
    WindowProcess& window_;
    TrayItem& item_;
    std::chrono::milliseconds asked_{};  // last
    WindowProcess::Messages::Token listening_;
    Lifetime lifetime_;
};

}  // namespace kovra
