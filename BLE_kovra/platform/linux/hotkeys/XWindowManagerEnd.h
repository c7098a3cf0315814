#pragma once

#include <xcb/xcb.h>

#include <functional>

#include "BLE_kovra/platform/linux/x11/XConnection.h"

namespace kovra {

// Reports the end of the present window manager, that is, of the program that owns the selection WM_Sn of the screen.
// Without a window manager nothing is reported. A window manager that starts later announces itself; but some, such as
// openbox, announce themselves only to programs that select all events of all windows.
//
// After the first queries, only the end wakes the program.
class XWindowManagerEnd {
  public:
    // `ended` is called from the queue, and may destroy this object.
    XWindowManagerEnd(XConnection& x, std::function<void()> ended);
    ~XWindowManagerEnd();
    XWindowManagerEnd(const XWindowManagerEnd&) = delete;
    XWindowManagerEnd& operator=(const XWindowManagerEnd&) = delete;

  private:
    void receive(const xcb_generic_event_t& event);
    void queryOwner();
    void receiveOwner();
    void report();

    XConnection& x_;
    const std::function<void()> ended_;
    xcb_atom_t selection_ = XCB_NONE;
    xcb_window_t owner_ = XCB_NONE;  // according to the last reply
    xcb_get_selection_owner_cookie_t request_{};
    XConnection::Token pendingReply_;
    XConnection::Events::Token listening_;
};

}  // namespace kovra
