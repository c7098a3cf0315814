#pragma once

#include <xcb/xcb.h>

#include <functional>
#include <memory>

#include "BLE_kovra/platform/linux/x11/XConnection.h"

namespace kovra {

// Tells whether the screen has a tray that embeds windows: a program that owns the screen's tray selection. Sleeps
// until a new owner announces itself at the root window, or the window of the present one goes.
class XEmbedTrayWatch {
  public:
    // `changed` is called from the queue with each change; at first there counts as none.
    XEmbedTrayWatch(XConnection& x, std::function<void(bool isThere)> changed);
    ~XEmbedTrayWatch();
    XEmbedTrayWatch(const XEmbedTrayWatch&) = delete;
    XEmbedTrayWatch& operator=(const XEmbedTrayWatch&) = delete;

  private:
    void receive(const xcb_generic_event_t& event);
    // Asks for the owner, again and again until it is twice the same.
    void look();
    void found();

    XConnection& x_;
    std::function<void(bool)> changed_;
    xcb_atom_t selection_ = XCB_NONE;
    xcb_atom_t announcement_ = XCB_NONE;
    xcb_window_t owner_ = XCB_NONE;
    xcb_window_t candidate_ = XCB_NONE;  // who owned it when last asked
    xcb_get_selection_owner_cookie_t question_{};
    XConnection::Token whenAnswered_;
    XConnection::Events::Token listening_;
};

}  // namespace kovra
