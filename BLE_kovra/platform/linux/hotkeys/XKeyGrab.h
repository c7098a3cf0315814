#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "BLE_kovra/platform/HotKeyService.h"
#include "BLE_kovra/platform/linux/hotkeys/XKeyboardExtension.h"
#include "BLE_kovra/platform/linux/hotkeys/XModifiers.h"
#include "BLE_kovra/platform/linux/hotkeys/XWindowManagerEnd.h"
#include "BLE_kovra/platform/linux/x11/XConnection.h"

namespace kovra {

// A grab of one key with Control and Alt, in all windows, for as long as this object lives.
//
// A press counts only with exactly these modifiers, whichever lock keys are on and whichever layout is active. A held
// key counts as one press if the server has the keyboard extension. If the keyboard map moves Alt or a lock key to
// another modifier bit, the key is grabbed again with the new bits.
//
// The key is grabbed after the server has reported its keyboard map. If another program has grabbed the key with any
// combination of lock keys, this object releases it. It tries again when the keyboard map changes, when the window
// manager ends, and when a window manager or another manager of the desktop announces itself.
class XKeyGrab : public HotKeyService::Reference {
  public:
    using Holder = HotKeyState::Holder;

    // `held` is called after each attempt, and receives who holds the key: nobody if the keyboard has no Alt.
    XKeyGrab(XConnection& connection, xcb_keycode_t key, std::function<void()> pressed,
             std::function<void(Holder)> held);
    ~XKeyGrab() override;
    XKeyGrab(const XKeyGrab&) = delete;
    XKeyGrab& operator=(const XKeyGrab&) = delete;

  private:
    using States = std::vector<std::uint16_t>;

    static States statesFor(const XModifiers& modifiers);
    void receive(const xcb_generic_event_t& event);
    bool isAnnouncement(const xcb_generic_event_t& event) const;
    void tryAgain();
    void query();
    void mapReceived();
    void grab(States states);
    void checkGrabs();
    void release();

    XConnection& connection_;
    XKeyboardExtension keyboard_;
    const xcb_keycode_t key_;
    const std::function<void()> pressed_;
    const std::function<void(Holder)> held_;

    // The pending queries.
    std::optional<XModifierQuery> modifiers_;
    xcb_query_keymap_cookie_t keysDown_{};
    XConnection::Token whenAnswered_;
    bool isMapStale_ = false;  // the map has changed since the query

    States grabbed_;
    std::vector<xcb_void_cookie_t> grabs_;  // requests whose result is not known yet
    XConnection::Token whenGranted_;
    // These two exist while another program has the key.
    XConnection::Token managers_;
    std::optional<XWindowManagerEnd> windowManager_;

    bool isDown_ = false;
    XConnection::Events::Token listening_;
};

}  // namespace kovra
