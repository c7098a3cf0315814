#pragma once

#include <string>
#include <vector>

#include "BLE_kovra/platform/linux/x11/XConnection.h"

namespace kovra {

// Ends launch feedback on X, with the message "remove" of freedesktop.org's startup notification protocol (0.1). The
// desktop and its window manager receive it as client messages to the root window.
class XLaunch {
  public:
    explicit XLaunch(XConnection& x) : x_(x) {}

    // Sends the message once the server has replied with the numbers of two names. Waits for nothing.
    void end(const std::string& id);

  private:
    void send(xcb_atom_t begin, xcb_atom_t rest);

    XConnection& x_;
    std::vector<std::string> ids_;  // those whose messages are not sent yet
    XConnection::Token pendingReply_;
};

// Returns the text of the message "remove". The protocol separates values by spaces, so a backslash precedes each
// space, quotation mark and backslash in the ID.
std::string removeMessage(const std::string& id);

}  // namespace kovra
