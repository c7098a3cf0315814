#include "BLE_kovra/platform/linux/tray/StatusNotifierFront.h"

#include <unistd.h>

#include <utility>

namespace kovra {

StatusNotifierFront::StatusNotifierFront(TrayItem& item, SessionBus& bus, StatusNotifierWatcher& watcher,
                                         ActivationToken& token, std::string iconThemePath,
                                         StatusNotifierItem::PopUp popUp)
    : bus_(bus),
      watcher_(watcher),
      busName_("org.kde.StatusNotifierItem-" + std::to_string(::getpid()) + "-1"),
      item_(item.told(), token, std::move(iconThemePath), std::move(popUp)),
      menu_(item.told().menu, [&item](std::size_t position) { item.choose(position); }),
      listener_(bus.listen([this](sd_bus*) { begin(); }, [this] { end(); })) {}

StatusNotifierFront::~StatusNotifierFront() {
    if (!isExported_) return;
    watcher_.setItem("");
    // Its name goes, and with it the item from every bar.
    if (bus_.bus() != nullptr) sd_bus_release_name_async(bus_.bus(), nullptr, busName_.c_str(), ignoreAnswer, nullptr);
}

void StatusNotifierFront::show(const TrayContents&, const TrayChanges& changes) {
    item_.tell(changes);
    if (changes.menu) menu_.tellLayout();
    if (!changes.states.empty()) menu_.tellStates(changes.states);
    isComplete_ = true;
    begin();
}

void StatusNotifierFront::begin() {
    if (!listener_ || !listener_->knowsItIsUp || bus_.bus() == nullptr || !isComplete_ || isExported_) return;
    isExported_ = true;
    item_.exportOn(bus_.bus());
    menu_.exportOn(bus_.bus());
    sd_bus_request_name_async(bus_.bus(), nullptr, busName_.c_str(), 0, ignoreAnswer, nullptr);
    watcher_.setItem(busName_);
}

void StatusNotifierFront::end() {
    isExported_ = false;
    item_.letGoOfBus();
    menu_.letGoOfBus();
}

}  // namespace kovra
