#include "BLE_kovra/platform/linux/tray/StatusNotifierFront.h"

#include <utility>

namespace kovra {

StatusNotifierFront::StatusNotifierFront(TrayItem& item, SessionBus& bus, StatusNotifierWatcher& watcher,
                                         PanelLook& look, ActivationToken& token, std::string iconThemePath,
                                         StatusNotifierItem::PopUp popUp)
    : bus_(bus.connection()),
      watcher_(watcher),
      item_(item.shown(), look, token, std::move(iconThemePath), std::move(popUp)),
      menu_(item.shown().menu, [&item](std::size_t position) { item.choose(position); }),
      looks_(look.listen([this] { item_.notify({.image = true, .toolTip = false, .menu = false, .states = {}}); })),
      listening_(bus.listen([this](BusConnection* connection) { busChanged(connection); })) {}

StatusNotifierFront::~StatusNotifierFront() {
    if (isExported_) watcher_.setItem("");
}

void StatusNotifierFront::show(const TrayContents&, const TrayChanges& changes) {
    item_.notify(changes);
    if (changes.menu) menu_.menuReplaced();
    if (!changes.states.empty()) menu_.statesChanged(changes.states);
    hasContents_ = true;
    exportIfReady();
}

void StatusNotifierFront::busChanged(BusConnection* bus) {
    bus_ = bus;
    if (bus != nullptr) return exportIfReady();
    isExported_ = false;
    item_.detach();
    menu_.detach();
}

void StatusNotifierFront::exportIfReady() {
    if (bus_ == nullptr || !hasContents_ || isExported_) return;
    isExported_ = true;
    item_.exportOn(*bus_);
    menu_.exportOn(*bus_);
    watcher_.setItem(StatusNotifierItem::path);
}

}  // namespace kovra
