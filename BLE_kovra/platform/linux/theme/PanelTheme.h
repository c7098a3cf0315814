#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "BLE_kovra/platform/linux/bus/SessionBus.h"
#include "BLE_kovra/platform/linux/loop/Lifetime.h"
#include "BLE_kovra/platform/linux/loop/SdEventLoop.h"
#include "BLE_kovra/platform/linux/theme/LxqtTheme.h"
#include "BLE_kovra/platform/linux/theme/PanelLook.h"
#include "BLE_kovra/platform/linux/theme/PlasmaColors.h"
#include "BLE_kovra/platform/linux/theme/PortalColorScheme.h"
#include "BLE_kovra/platform/linux/theme/XTray.h"

namespace kovra {

// Chooses the look of the icon, by what is known about the desktop's panel. The most certain source wins:
// 1. the color that the panel announces for the icons of an XEmbed tray
// 2. on LXQt, the theme of the panel
// 3. the color scheme that the user prefers for windows; since a panel may differ from it, the icon is outlined
// Without any of them, the icon is outlined too.
//
// On desktops whose panels recolor icons, nothing is queried. On Plasma the look is repeated when the desktop's colors
// change: Plasma 5.27 recolors only icons of its own theme then, and leaves those of programs as they were, until their
// items announce a new icon. Everything else is queried from the queue, which first runs when the icon has been
// registered, and nothing is polled.
class PanelTheme {
  public:
    // `desktops` are the names of the desktop, `tray` is null without an X server.
    PanelTheme(SdEventLoop& loop, SessionBus& bus, XTray* tray, std::vector<std::string> desktops);
    PanelTheme(const PanelTheme&) = delete;
    PanelTheme& operator=(const PanelTheme&) = delete;

    PanelLook& look() { return look_; }

  private:
    void query();
    void update();

    SdEventLoop& loop_;
    SessionBus& bus_;
    XTray* const tray_;
    const std::vector<std::string> desktops_;
    PanelLook look_;
    std::optional<PanelTone> announced_;
    std::optional<PanelTone> preferred_;
    std::optional<LxqtTheme> lxqt_;
    std::optional<PlasmaColors> plasma_;
    std::optional<PortalColorScheme> portal_;
    XTray::Token watching_;
    Lifetime lifetime_;
};

}  // namespace kovra
