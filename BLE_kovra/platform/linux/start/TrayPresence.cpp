#include "BLE_kovra/platform/linux/start/TrayPresence.h"

#include "BLE_kovra/platform/linux/desktop/XdgEnvironment.h"
#include "BLE_kovra/platform/linux/tray/StatusNotifierWatcher.h"
#include "BLE_kovra/platform/linux/windows/WindowProcess.h"

namespace kovra {

bool TrayPresence::hasIcon() const {
    return watcher_.icon() == StatusNotifierWatcher::Icon::shown || window_.shows<ShowTray>();
}

std::string TrayPresence::advice() const {
    const bool isMissing = watcher_.icon() == StatusNotifierWatcher::Icon::notShown && !window_.shows<ShowTray>();
    return isMissing && anyOf(desktopNames(), {"GNOME"}) ? "tray.advice" : "";
}

}  // namespace kovra
