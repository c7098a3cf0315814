#pragma once

#include <functional>
#include <memory>
#include <string>

#include "BLE_kovra/platform/linux/bus/SessionBus.h"

namespace kovra {

// The desktop's register of status items, org.kde.StatusNotifierWatcher, and whether there is a host: a bar that shows
// what is registered. Both may come late, go, and come back, as may the session bus.
class StatusNotifierWatcher {
  public:
    explicit StatusNotifierWatcher(SessionBus& bus);

    // False while the desktop has not said so.
    bool hasHost() const { return hasHost_; }
    // Called from the queue when that has changed.
    std::function<void()> onHostChanged;

    // The item, under the bus name that this program owns for it, is registered with the watcher that is there and with
    // each that comes. An empty name for no item.
    void setItem(std::string busName);

  private:
    void up(sd_bus* bus);
    void gone();
    void ownerChanged(bool isThere);
    void hostsChanged();
    void registerItem();
    void askForHost();
    void setHasHost(bool hasHost);

    static int heardOwner(sd_bus_message* message, void* context, sd_bus_error* error);
    static int heardHosts(sd_bus_message* message, void* context, sd_bus_error* error);
    static int registered(sd_bus_message* reply, void* context, sd_bus_error* error);
    static int toldHost(sd_bus_message* reply, void* context, sd_bus_error* error);
    void post(std::function<void(StatusNotifierWatcher&)> work);

    SdEventLoop& loop_;
    sd_bus* bus_ = nullptr;
    std::string item_;
    bool isRegistered_ = false;  // or about to be
    bool hasHost_ = false;
    BusSlot ownerSlot_;
    BusSlot hostCameSlot_;
    BusSlot hostWentSlot_;
    BusSlot registration_;
    BusSlot question_;
    std::shared_ptr<StatusNotifierWatcher*> self_;  // how a queued block learns that this is no more
    std::shared_ptr<SessionBus::Listener> listener_;
};

}  // namespace kovra
