#pragma once

#include <xcb/xcb.h>

namespace kovra {

// The keyboard extension of the X server. Unlike the core protocol, it reports whether a held key was really released.
// It also reports a change of the layout that keeps all key codes.
//
// The replies to its requests are discarded. On a server without the extension, use() does nothing.
class XKeyboardExtension {
  public:
    explicit XKeyboardExtension(xcb_connection_t* connection);

    // Call this function after the server has replied to the constructor's request; otherwise it blocks until then.
    // From now on a held key is reported as presses without releases, and every change of the keyboard map is reported.
    void use();
    // Returns whether the event reports a change of the keyboard map, by the extension or by the core protocol.
    bool isMapChange(const xcb_generic_event_t& event) const;

  private:
    xcb_connection_t* connection_;
    int firstEvent_ = -1;
};

}  // namespace kovra
