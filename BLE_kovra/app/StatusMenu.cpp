#include "BLE_kovra/app/StatusMenu.h"

#include <string>
#include <utility>

#include "BLE_kovra/l10n/L10n.h"

namespace kovra {

namespace {

std::string hotKeyHint(const L10n& texts, const HotKeyState& hotKey) {
    switch (hotKey.holder) {
        case HotKeyState::Holder::another:
            return texts.s("menu.hotkeyHint.taken");
        case HotKeyState::Holder::nobody:
            return texts.s("menu.hotkeyHint.unavailable");
        case HotKeyState::Holder::unrequested:
        case HotKeyState::Holder::refused:
            return texts.s("menu.hotkeyHint.choose");
        case HotKeyState::Holder::us:
            break;
    }
    if (hotKey.combination.empty()) return texts.s("menu.hotkeyHint");
    return texts.s("menu.hotkeyHint.assigned") + hotKey.combination;
}

}  // namespace

Menu makeStatusMenu(const L10n& texts, const StatusMenuActions& actions, MenuItemState enabled,
                    MenuItemState launchAtLogin, const HotKeyState& hotKey) {
    Menu menu;
    const auto addTitled = [&](std::string title) -> MenuItem& {
        MenuItem& item = menu.items.emplace_back();
        item.title = std::move(title);
        return item;
    };
    const auto add = [&](const char* key) -> MenuItem& { return addTitled(texts.s(key)); };
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
    MenuItem& hint = addTitled(hotKeyHint(texts, hotKey));
    if (hotKey.mayBeRequested())
        hint.action = MenuAction{"requestHotKey", actions.requestHotKey};
    else
        hint.isEnabled = false;
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
