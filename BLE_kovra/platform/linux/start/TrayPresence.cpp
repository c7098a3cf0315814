#include "BLE_kovra/platform/linux/start/TrayPresence.h"

#include "BLE_kovra/platform/linux/desktop/XdgEnvironment.h"
#include "BLE_kovra/platform/linux/tray/StatusNotifierWatcher.h"
#include "BLE_kovra/platform/linux/windows/WindowProcess.h"

namespace kovra {

// A panel that lists items may refuse this one. Then it does not show the icon.
TrayPresence::Tray TrayPresence::tray() const {
    if (watcher_.icon() == StatusNotifierWatcher::Icon::shown) return Tray::panel;
    return window_.shows<ShowTray>() ? Tray::embedded : Tray::none;
}

const char* TrayPresence::name() const {
    switch (tray()) {
        case Tray::panel:
            return "panel";
        case Tray::embedded:
            return "embedded";
        case Tray::none:
            break;
    }
    return "none";
}

std::string TrayPresence::advice() const {
    const bool isMissing = watcher_.icon() == StatusNotifierWatcher::Icon::notShown && !window_.shows<ShowTray>();
    return isMissing && anyOf(desktopNames(), {"GNOME"}) ? "tray.advice" : "";
}

}  // namespace kovra
