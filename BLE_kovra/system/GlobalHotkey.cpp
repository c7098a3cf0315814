#include "BLE_kovra/system/GlobalHotkey.h"

#include "BLE_kovra/platform/Platform.h"

namespace kovra {

GlobalHotkey& GlobalHotkey::shared() {
    static auto* const instance = new GlobalHotkey(Platform::current().hotKeys);
    return *instance;
}

void GlobalHotkey::registerHotKey() {
    service_.onStateChange = onStateChange;
    service_.description = description;
    handlerRef_ = service_.installHandler([this] { return pressed(); });
    hotKeyRef_ = service_.registerHotKey(hotKey);
}

void GlobalHotkey::unregister() {
    service_.onStateChange = nullptr;
    hotKeyRef_.reset();
    handlerRef_.reset();
}

void GlobalHotkey::request() {
    if (hotKeyRef_) hotKeyRef_->request();
}

int GlobalHotkey::pressed() const {
    // Call a copy, since the trigger may replace itself.
    if (const auto trigger = onTrigger) trigger();
    return 0;
}

}  // namespace kovra
