#pragma once

#include <xcb/xcb.h>

namespace kovra {

// The X server's keyboard extension, for the two things that the core protocol does not tell: whether a release of a
// held key is a real one, and that another layout has come without new key codes.
//
// Asks and does not wait. On a server without the extension nothing changes.
class XKeyboardExtension {
  public:
    explicit XKeyboardExtension(xcb_connection_t* connection);

    // Once the server has answered; before that, it would wait for it. From now on this connection hears of a held key
    // as presses alone, and of every change of the keyboard's map.
    void use();
    // Also what the core protocol tells of it.
    bool tellsOfNewMap(const xcb_generic_event_t& event) const;

  private:
    xcb_connection_t* connection_;
    int firstEvent_ = -1;
};

}  // namespace kovra
