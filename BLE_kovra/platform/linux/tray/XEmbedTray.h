#pragma once

#include "BLE_kovra/platform/linux/theme/PanelLook.h"
#include "BLE_kovra/platform/linux/theme/XTray.h"
#include "BLE_kovra/platform/linux/tray/StatusNotifierWatcher.h"
#include "BLE_kovra/platform/linux/tray/TrayItem.h"
#include "BLE_kovra/platform/linux/tray/XEmbedTrayChoice.h"
#include "BLE_kovra/platform/linux/windows/WindowProcess.h"

namespace kovra {

// The front for trays that embed windows (XEmbed). The window process shows the icon there whenever XEmbedTrayChoice
// requires it.
class XEmbedTray : public TrayFront {
  public:
    XEmbedTray(MainQueue& queue, XTray& tray, PanelLook& look, WindowProcess& window, TrayItem& item);
    ~XEmbedTray() override;

    // Follows the watcher's reports from now on. While the watcher reports a StatusNotifier host, that host shows the
    // icon instead of this front.
    void follow(StatusNotifierWatcher& watcher);
    void setHostPresent(bool isPresent) { choice_.setHostPresent(isPresent); }

    void show(const TrayContents& contents, const TrayChanges& changes) override;

  private:
    void lookForTrays(bool isWanted);
    void showIcon(bool isWanted);
    void send();

    XTray& tray_;
    PanelLook& look_;
    WindowProcess& window_;
    TrayItem& item_;
    WindowProcess::Messages::Token listening_;
    StatusNotifierWatcher::Hosts::Token hosts_;
    PanelLook::Changes::Token looks_;
    bool isShown_ = false;
    XEmbedTrayChoice choice_;
    XTray::Token watching_;
};

}  // namespace kovra
