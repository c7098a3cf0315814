#include "BLE_kovra/platform/linux/tray/StatusNotifierWatcher.h"

#include <utility>

namespace kovra {

namespace {

constexpr const char* name = "org.kde.StatusNotifierWatcher";
constexpr const char* path = "/StatusNotifierWatcher";
constexpr const char* interface = "org.kde.StatusNotifierWatcher";

}  // namespace

StatusNotifierWatcher::StatusNotifierWatcher(SessionBus& bus)
    : loop_(bus.loop()),
      bus_(bus.connection()),
      listening_(bus.listen([this](BusConnection* connection) { busChanged(connection); })) {}

void StatusNotifierWatcher::setItem(std::string path) {
    item_ = std::move(path);
    isRegistered_ = isAccepted_ = false;
    registerItem();
}

void StatusNotifierWatcher::busChanged(BusConnection* bus) {
    bus_ = bus;
    if (bus == nullptr) {
        for (BusToken* token : {&owner_, &hostRegistered_, &hostUnregistered_, &registration_, &query_}) token->reset();
        isRegistered_ = isAccepted_ = isAnswered_ = false;
        setHasHost(false);
        return;
    }
    registerItem();
    // Subscribe in the next turn of the queue. After a reconnection the item is exported in this turn; it is registered
    // before the subscriptions, so that the icon appears sooner.
    loop_.async(lifetime_.guard([this] { subscribe(); }));
}

void StatusNotifierWatcher::subscribe() {
    if (bus_ == nullptr) return;
    owner_ = bus_->watchOwner(name, [this](std::string_view, std::string_view now) { ownerChanged(!now.empty()); });
    const auto changed = [this](sd_bus_message*) { hostsChanged(); };
    hostRegistered_ = bus_->receive({name, path, interface, "StatusNotifierHostRegistered"}, changed);
    hostUnregistered_ = bus_->receive({name, path, interface, "StatusNotifierHostUnregistered"}, changed);
    queryHost();
}

void StatusNotifierWatcher::ownerChanged(bool isPresent) {
    isRegistered_ = isAccepted_ = false;
    if (isPresent) {
        registerItem();
        queryHost();
    } else {
        query_.reset();
        isAnswered_ = true;
        setHasHost(false);
    }
}

void StatusNotifierWatcher::hostsChanged() {
    registerItem();  // again, if the watcher owned its name before it could accept items
    queryHost();
}

void StatusNotifierWatcher::registerItem() {
    if (bus_ == nullptr || item_.empty() || isRegistered_) return;
    isRegistered_ = true;
    registration_ = bus_->call(
        {name, path, interface, "RegisterStatusNotifierItem"}, [this](BusWriter& arguments) { arguments.text(item_); },
        [this](sd_bus_message* answer) {
            isAccepted_ = sd_bus_message_is_method_error(answer, nullptr) <= 0;
            isRegistered_ = isAccepted_;
            updateIcon();
        });
}

void StatusNotifierWatcher::queryHost() {
    if (bus_ == nullptr) return;
    query_ = bus_->call(
        {name, path, "org.freedesktop.DBus.Properties", "Get"},
        [](BusWriter& arguments) { arguments.text(interface).text("IsStatusNotifierHostRegistered"); },
        [this](sd_bus_message* answer) {
            int hasHost = 0;
            const bool isRead = sd_bus_message_is_method_error(answer, nullptr) <= 0 &&
                                sd_bus_message_read(answer, "v", "b", &hasHost) > 0;
            if (isRead) registerItem();  // a watcher may have started between the registration and the subscriptions
            isAnswered_ = true;
            setHasHost(isRead && hasHost != 0);
        });
}

void StatusNotifierWatcher::setHasHost(bool hasHost) {
    if (std::exchange(hasHost_, hasHost) != hasHost) hosts_.call(hasHost);
    updateIcon();
}

void StatusNotifierWatcher::updateIcon() {
    Icon icon = Icon::unknown;
    if (hasHost_ && isAccepted_) icon = Icon::shown;
    if (!hasHost_ && isAnswered_) icon = Icon::notShown;
    if (std::exchange(icon_, icon) != icon) icons_.call();
}

}  // namespace kovra
