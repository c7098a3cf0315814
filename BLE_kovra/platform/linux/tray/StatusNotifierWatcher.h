#pragma once

#include <string>

#include "BLE_kovra/platform/linux/bus/SessionBus.h"
#include "BLE_kovra/platform/linux/loop/Lifetime.h"
#include "BLE_kovra/platform/linux/loop/Listeners.h"

namespace kovra {

// A client of org.kde.StatusNotifierWatcher, the service where status items register. Reports whether there is a host,
// that is, a panel that shows the registered items. The service, the host and the session bus may start late, disappear
// and return.
class StatusNotifierWatcher {
  public:
    explicit StatusNotifierWatcher(SessionBus& bus);

    // Returns whether there is a host. Returns false until the desktop has replied.
    bool hasHost() const { return hasHost_; }
    // Called from the queue whenever the presence of a host changes.
    using Hosts = Listeners<bool>;
    [[nodiscard]] Hosts::Token listen(Hosts::Listener listener) { return hosts_.add(std::move(listener)); }

    // What is known about the item's icon: it is shown if there is a host and the watcher has accepted the item.
    enum class Icon { unknown, shown, notShown };
    Icon icon() const { return icon_; }
    // Called from the queue whenever icon() changes.
    using Icons = Listeners<>;
    [[nodiscard]] Icons::Token listenForIcon(Icons::Listener listener) { return icons_.add(std::move(listener)); }

    // Registers the item with the current watcher and with every later one. `path` is the path of its object on this
    // connection. With an empty path, no item is registered.
    void setItem(std::string path);

  private:
    void busChanged(BusConnection* bus);
    void subscribe();
    void ownerChanged(bool isPresent);
    void hostsChanged();
    void registerItem();
    void queryHost();
    void setHasHost(bool hasHost);
    void updateIcon();

    SdEventLoop& loop_;
    BusConnection* bus_;  // null while disconnected; may not be established yet
    std::string item_;
    bool isRegistered_ = false;  // true also while the call is pending
    bool isAccepted_ = false;    // the watcher has accepted the item
    bool hasHost_ = false;
    bool isAnswered_ = false;  // the desktop has replied whether there is a host
    Icon icon_ = Icon::unknown;
    Hosts hosts_;
    Icons icons_;
    BusToken owner_;
    BusToken hostRegistered_;
    BusToken hostUnregistered_;
    BusToken registration_;
    BusToken query_;
    BusToken listening_;
    Lifetime lifetime_;
};

}  // namespace kovra
