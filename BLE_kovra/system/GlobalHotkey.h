#pragma once

#include <functional>
#include <memory>

#include "BLE_kovra/platform/HotKeyService.h"

namespace kovra {

// Ctrl+Opt+T, from whichever window. It does not know what a press is good for, nor whether the desktop gave it the
// key: another program may hold it, and then there simply are no presses.
class GlobalHotkey {
  public:
    static constexpr HotKey hotKey{.keyCode = HotKey::ansiT,
                                   .modifiers = HotKey::controlKey | HotKey::optionKey,
                                   .signature = 0x54475244,  // TGRD
                                   .number = 1};

    explicit GlobalHotkey(HotKeyService& service) : service_(service) {}

    // The program's one instance, never released.
    static GlobalHotkey& shared();

    // Called on every press, inside the desktop's event; without it presses are swallowed. May be replaced at any time.
    std::function<void()> onTrigger;

    // Installs the handler, then registers the hot key. Called once.
    void registerHotKey();
    // Takes back what there is to take back. The teardown of this object does not.
    void unregister();

  private:
    int pressed() const;

    HotKeyService& service_;
    std::unique_ptr<HotKeyService::Reference> hotKeyRef_;
    std::unique_ptr<HotKeyService::Reference> handlerRef_;
};

}  // namespace kovra
