#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "BLE_kovra/platform/HotKeyService.h"
#include "BLE_kovra/platform/linux/hotkeys/XKeyboardExtension.h"
#include "BLE_kovra/platform/linux/hotkeys/XModifiers.h"
#include "BLE_kovra/platform/linux/x11/XConnection.h"

namespace kovra {

// One key of the keyboard with Control and Alt, taken from all windows for as long as this lives.
//
// A press with these modifiers and no others counts, whichever lock keys are on and whichever layout is; a held key is
// one press. Follows the keyboard's map where Alt or a lock key gets another modifier bit.
//
// It is taken as soon as the server has answered. Where another program has the key with any of the lock keys, none of
// them is taken, in silence and for good.
class XKeyGrab : public HotKeyService::Reference {
  public:
    XKeyGrab(XConnection& connection, xcb_keycode_t key, std::function<void()> pressed);
    ~XKeyGrab() override;
    XKeyGrab(const XKeyGrab&) = delete;
    XKeyGrab& operator=(const XKeyGrab&) = delete;

  private:
    using States = std::vector<std::uint16_t>;

    static States statesFor(const XModifiers& modifiers);
    void receive(const xcb_generic_event_t& event);
    void query();
    void answered();
    void grab(States states);
    void checkGrabs();
    void release();

    XConnection& connection_;
    XKeyboardExtension keyboard_;
    const xcb_keycode_t key_;
    const std::function<void()> pressed_;

    // The questions that are under way.
    std::optional<XModifierQuestion> modifiers_;
    xcb_query_keymap_cookie_t keysDown_{};
    XConnection::Token whenAnswered_;
    bool isMapNewer_ = false;  // than the one that was asked for

    States grabbed_;
    std::vector<xcb_void_cookie_t> grabs_;  // not known yet whether they were granted
    XConnection::Token whenGranted_;
    bool wasEverOurs_ = false;

    bool isDown_ = false;
    XConnection::Events::Token listening_;
};

}  // namespace kovra
