#pragma once

#include <string>

#include "BLE_kovra/platform/linux/bus/SessionBus.h"
#include "BLE_kovra/platform/linux/tray/DBusMenu.h"
#include "BLE_kovra/platform/linux/tray/StatusNotifierItem.h"
#include "BLE_kovra/platform/linux/tray/StatusNotifierWatcher.h"
#include "BLE_kovra/platform/linux/tray/TrayItem.h"

namespace kovra {

// The item on the session bus, for the bars of all desktops that follow StatusNotifierItem: exported and registered
// whenever the bus is up, under a name of its own that goes with it. Signals tell only what has changed.
class StatusNotifierFront : public TrayFront {
  public:
    StatusNotifierFront(TrayItem& item, SessionBus& bus, StatusNotifierWatcher& watcher, ActivationToken& token,
                        std::string iconThemePath, StatusNotifierItem::PopUp popUp);
    ~StatusNotifierFront() override;

    void show(const TrayContents& contents, const TrayChanges& changes) override;

  private:
    void busChanged(BusConnection* bus);
    void exportWhenComplete();

    BusConnection* bus_ = nullptr;  // while it is up
    StatusNotifierWatcher& watcher_;
    const std::string busName_;
    StatusNotifierItem item_;
    DBusMenu menu_;
    bool isComplete_ = false;  // there is something to show
    bool isExported_ = false;
    BusToken listening_;
};

}  // namespace kovra
