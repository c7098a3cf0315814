#pragma once

#include <string>

#include "BLE_kovra/platform/linux/bus/SessionBus.h"
#include "BLE_kovra/platform/linux/loop/Listeners.h"

namespace kovra {

// The desktop's register of status items, org.kde.StatusNotifierWatcher, and whether there is a host: a panel that
// shows what is registered. Both may come late, go, and come back, as may the session bus.
class StatusNotifierWatcher {
  public:
    explicit StatusNotifierWatcher(SessionBus& bus);

    // False while the desktop has not said so.
    bool hasHost() const { return hasHost_; }
    // Receives from the queue whether there is a host, whenever that has changed.
    using Hosts = Listeners<bool>;
    [[nodiscard]] Hosts::Token listen(Hosts::Listener listener) { return hosts_.add(std::move(listener)); }

    // The item, under the bus name that this program owns for it, is registered with the watcher that is present and
    // with each that comes. An empty name for no item.
    void setItem(std::string busName);

  private:
    void busChanged(BusConnection* bus);
    void ownerChanged(bool isPresent);
    void hostsChanged();
    void registerItem();
    void queryHost();
    void setHasHost(bool hasHost);

    BusConnection* bus_ = nullptr;
    std::string item_;
    bool isRegistered_ = false;  // or about to be
    bool hasHost_ = false;
    Hosts hosts_;
    BusToken owner_;
    BusToken hostRegistered_;
    BusToken hostUnregistered_;
    BusToken registration_;
    BusToken query_;
    BusToken listening_;
};

}  // namespace kovra
