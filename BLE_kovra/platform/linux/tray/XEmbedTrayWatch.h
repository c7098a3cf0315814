#pragma once

#include <xcb/xcb.h>

#include <functional>
#include <memory>

#include "BLE_kovra/platform/linux/x11/XConnection.h"

namespace kovra {

// A watch that reports whether the screen has a tray that embeds windows, that is, a program that owns the screen's
// tray selection. After the first queries, it wakes the program in three cases: the root window changes, a new owner
// announces itself there, or the current owner's window is destroyed.
class XEmbedTrayWatch {
  public:
    // `changed` is called from the queue after each change. Assumes at first that there is no tray.
    XEmbedTrayWatch(XConnection& x, std::function<void(bool isPresent)> changed);
    ~XEmbedTrayWatch();
    XEmbedTrayWatch(const XEmbedTrayWatch&) = delete;
    XEmbedTrayWatch& operator=(const XEmbedTrayWatch&) = delete;

  private:
    void receive(const xcb_generic_event_t& event);
    // Queries the owner again and again until two replies in a row are the same.
    void queryOwner();
    void receiveOwner();

    XConnection& x_;
    std::function<void(bool)> changed_;
    xcb_atom_t selection_ = XCB_NONE;
    xcb_atom_t announcement_ = XCB_NONE;
    xcb_window_t owner_ = XCB_NONE;
    xcb_window_t candidate_ = XCB_NONE;  // the owner according to the last reply
    xcb_get_selection_owner_cookie_t ownerRequest_{};
    XConnection::Token announcements_;
    XConnection::Token pendingReply_;
    XConnection::Events::Token listening_;
};

}  // namespace kovra
