#pragma once

#include <string>

#include "BLE_kovra/platform/linux/bus/SessionBus.h"
#include "BLE_kovra/platform/linux/theme/PanelLook.h"
#include "BLE_kovra/platform/linux/tray/DBusMenu.h"
#include "BLE_kovra/platform/linux/tray/StatusNotifierItem.h"
#include "BLE_kovra/platform/linux/tray/StatusNotifierWatcher.h"
#include "BLE_kovra/platform/linux/tray/TrayItem.h"

namespace kovra {

// The front for desktops that support StatusNotifierItem. It exports and registers the item whenever the session bus is
// connected. Panels show the item until the connection ends. The front sends signals only for the parts that have
// changed.
class StatusNotifierFront : public TrayFront {
  public:
    StatusNotifierFront(TrayItem& item, SessionBus& bus, StatusNotifierWatcher& watcher, PanelLook& look,
                        ActivationToken& token, std::string iconThemePath, StatusNotifierItem::PopUp popUp);
    ~StatusNotifierFront() override;

    void show(const TrayContents& contents, const TrayChanges& changes) override;

  private:
    void busChanged(BusConnection* bus);
    void exportIfReady();

    BusConnection* bus_;  // null while disconnected; may not be established yet
    StatusNotifierWatcher& watcher_;
    StatusNotifierItem item_;
    DBusMenu menu_;
    bool hasContents_ = false;  // the item has contents to show
    bool isExported_ = false;
    PanelLook::Changes::Token looks_;
    BusToken listening_;
};

}  // namespace kovra
