#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/platform/linux/hotkeys/PortalRig.h"

namespace kovra {

// A program in a Wayland session that registers its hot key, and may request it.
struct ShortcutRig : PortalRig {
    using Calls = std::vector<std::string>;

    static constexpr HotKey testHotKey{.keyCode = HotKey::ansiT,
                                       .modifiers = HotKey::controlKey | HotKey::optionKey,
                                       .signature = 0x54455354,  // "TEST" in ASCII
                                       .number = 1};

    // What the portal receives from the program: each call, those of a start, and those of a start and a request.
    const std::string shortcut = " TEST-1 description=Mute trackpad preferred_trigger=CTRL+ALT+t";
    const std::string create = "CreateSession" + shortcut;
    const std::string bind = "BindShortcuts" + shortcut;
    const std::string registration = "Register org.ble_kovra.BLEKovra";
    const Calls look{registration, create, "ListShortcuts"};
    const Calls everything{registration, create, "ListShortcuts", bind};

    int pressed = 0;
    std::unique_ptr<HotKeyService::Reference> handler = hotKeys.installHandler([this] { return ++pressed, 0; });
    std::unique_ptr<HotKeyService::Reference> hotKey;

    void registerHotKey() {
        hotKeys.description = "Mute trackpad";
        hotKey = hotKeys.registerHotKey(testHotKey);
        ASSERT_NE(hotKey, nullptr);
        settle();
    }
    void request() {
        hotKey->request();
        settle();
    }
    void requestHotKey() {
        registerHotKey();
        request();
    }
    int press() {
        pressed = 0;
        portal.press();
        settle();
        return pressed;
    }
};

inline const HotKeyState nobodys{HotKeyState::Holder::nobody, ""};
inline const HotKeyState unrequested{HotKeyState::Holder::unrequested, ""};
inline const HotKeyState refused{HotKeyState::Holder::refused, ""};
inline HotKeyState ours(const std::string& combination) { return {HotKeyState::Holder::us, combination}; }

}  // namespace kovra
