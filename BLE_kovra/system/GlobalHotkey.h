#pragma once

#include <functional>
#include <memory>
#include <string>

#include "BLE_kovra/platform/HotKeyService.h"

namespace kovra {

// The global hot key Ctrl+Opt+T. If another program has grabbed the key, no press is reported. state() says so where
// the desktop tells.
class GlobalHotkey {
  public:
    static constexpr HotKey hotKey{.keyCode = HotKey::ansiT,
                                   .modifiers = HotKey::controlKey | HotKey::optionKey,
                                   .signature = 0x54475244,  // TGRD
                                   .number = 1};

    explicit GlobalHotkey(HotKeyService& service) : service_(service) {}

    // The process-wide instance, never destroyed.
    static GlobalHotkey& shared();

    // Called for each press, inside the callback for the desktop's event. If it is empty, presses have no effect. It
    // may be replaced at any time.
    std::function<void()> onTrigger;
    // Called after state() has changed. Set it before registerHotKey().
    std::function<void()> onStateChange;
    // What a press does, in the user's language. Set it before registerHotKey().
    std::string description;

    // Installs the handler, then registers the hot key. Call it once.
    void registerHotKey();
    // Unregisters the hot key, then removes the handler, if the desktop granted them.
    void unregister();

    HotKeyState state() const { return service_.state(); }
    // Has the desktop ask the user for the hot key (see HotKeyService::Reference).
    void request();

  private:
    int pressed() const;

    HotKeyService& service_;
    std::unique_ptr<HotKeyService::Reference> hotKeyRef_;
    std::unique_ptr<HotKeyService::Reference> handlerRef_;
};

}  // namespace kovra
