#pragma once

#include <string>
#include <vector>

#include "BLE_kovra/platform/linux/x11/XConnection.h"

namespace kovra {

// Ends launch feedback on X, with the message "remove" of freedesktop.org's startup notification protocol (0.1). The
// desktop and its window manager receive it as client messages to the root window.
class XLaunch {
  public:
    // Requests the numbers of two names, so that a message can be sent at once later.
    explicit XLaunch(XConnection& x);

    // Sends the message, or does so as soon as the server has replied with the numbers. Waits for nothing.
    void end(const std::string& id);

    // Waits until the server has handled what was sent, until the deadline (see Deadline). It may drop requests of a
    // process that ends before that.
    void finish();

  private:
    void send();

    XConnection& x_;
    std::vector<std::string> ids_;  // those whose messages are not sent yet
    xcb_atom_t begin_ = XCB_NONE;
    xcb_atom_t rest_ = XCB_NONE;
    XConnection::Token pendingReply_;
};

// Returns the text of the message "remove". The protocol separates values by spaces, so a backslash precedes each
// space, quotation mark and backslash in the ID.
std::string removeMessage(const std::string& id);

}  // namespace kovra
