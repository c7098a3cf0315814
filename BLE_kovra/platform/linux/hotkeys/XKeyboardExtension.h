#pragma once

#include <xcb/xcb.h>

namespace kovra {

// The keyboard extension of the X server. Unlike the core protocol, it reports whether a held key was really released.
// It also reports a change of the layout that keeps all key codes.
//
// Does not wait for replies. On a server without the extension nothing changes.
class XKeyboardExtension {
  public:
    explicit XKeyboardExtension(xcb_connection_t* connection);

    // Call it once the server has answered, otherwise it blocks. From now on a held key is reported as presses without
    // releases, and every change of the keyboard map is reported.
    void use();
    // Recognizes the event of the core protocol too.
    bool isMapChange(const xcb_generic_event_t& event) const;

  private:
    xcb_connection_t* connection_;
    int firstEvent_ = -1;
};

}  // namespace kovra
