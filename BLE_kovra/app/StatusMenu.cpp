#include "BLE_kovra/app/StatusMenu.h"

#include "BLE_kovra/l10n/L10n.h"

namespace kovra {

Menu makeStatusMenu(const L10n& texts, const StatusMenuActions& actions, MenuItemState enabled,
                    MenuItemState launchAtLogin) {
    Menu menu;
    const auto add = [&](const char* key) -> MenuItem& {
        MenuItem& item = menu.items.emplace_back();
        item.title = texts.text(key);
        return item;
    };
    const auto addAction = [&](const char* key, const char* name, const std::function<void()>& perform,
                               const char* keyEquivalent = "") -> MenuItem& {
        MenuItem& item = add(key);
        item.action = MenuAction{name, perform};
        item.keyEquivalent = keyEquivalent;
        return item;
    };
    const auto addSwitch = [&](const char* key, const char* name, const std::function<void()>& perform, int tag,
                               MenuItemState state) {
        MenuItem& item = addAction(key, name, perform);
        item.state = state;
        item.tag = tag;
    };

    addSwitch("block", "toggleEnabled", actions.toggleEnabled, StatusMenuTag::enabled, enabled);
    add("menu.hotkeyHint").isEnabled = false;
    addAction("menu.settings", "openSettings", actions.openSettings, ",");
    addSwitch("menu.launchAtLogin", "toggleLaunchAtLogin", actions.toggleLaunchAtLogin, StatusMenuTag::launchAtLogin,
              launchAtLogin);
    addAction("menu.activate", "activateDriver", actions.activateDriver);
    addAction("menu.about", "showAbout", actions.showAbout);
    menu.items.push_back(MenuItem::separator());
    addAction("menu.quit", "quit", actions.quit, "q");
    return menu;
}

}  // namespace kovra
