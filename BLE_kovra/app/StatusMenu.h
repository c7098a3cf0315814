#pragma once

#include <functional>

#include "BLE_kovra/platform/HotKeyService.h"
#include "BLE_kovra/platform/Menu.h"

namespace kovra {

class L10n;

// The tags of the two menu items with check marks.
struct StatusMenuTag {
    static constexpr int enabled = 1;
    static constexpr int launchAtLogin = 2;
};

struct StatusMenuActions {
    std::function<void()> toggleEnabled;
    std::function<void()> requestHotKey;
    std::function<void()> openSettings;
    std::function<void()> toggleLaunchAtLogin;
    std::function<void()> activateDriver;
    std::function<void()> showAbout;
    std::function<void()> quit;
};

// Returns the status item's menu in the language of `texts`. `enabled` and `launchAtLogin` are the two check marks. The
// second item says which key toggles the switch, or why there is none. If the hot key may be requested, the item
// requests it.
Menu makeStatusMenu(const L10n& texts, const StatusMenuActions& actions, MenuItemState enabled,
                    MenuItemState launchAtLogin, const HotKeyState& hotKey = {});

}  // namespace kovra
