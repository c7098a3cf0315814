#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <vector>

namespace kovra {

// The modifier bits that are assigned to Alt, Num Lock and Scroll Lock. The protocol fixes only those of Shift, Lock
// and Control; the keyboard map assigns the others. A bit is 0 if no key has that modifier.
struct XModifiers {
    std::uint16_t alt = 0;
    std::uint16_t numLock = 0;
    std::uint16_t scrollLock = 0;

    // Returns every combination of lock keys that may be on.
    std::vector<std::uint16_t> lockSets() const;
};

// A query for the modifier bits. The constructor sends the requests. If read() is called before the server has replied,
// it blocks.
class XModifierQuery {
  public:
    explicit XModifierQuery(xcb_connection_t* connection);
    // Call it only once. Returns zeros if the server has disconnected.
    XModifiers read() const;

  private:
    xcb_connection_t* connection_;
    xcb_get_modifier_mapping_cookie_t modifierMapping_{};
    xcb_get_keyboard_mapping_cookie_t keyboardMapping_{};
};

}  // namespace kovra
