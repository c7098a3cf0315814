#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <vector>

namespace kovra {

// Which modifier bits of the X server stand for what at the moment: only those of Shift, Lock and Control are fixed,
// the others follow from the keys that the keyboard's map gives them to. 0 where no key has it.
struct XModifiers {
    std::uint16_t alt = 0;
    std::uint16_t numLock = 0;
    std::uint16_t scrollLock = 0;

    // Every set of lock keys that may be on.
    std::vector<std::uint16_t> lockSets() const;
};

// Asks in the constructor. Read once the server has answered: before that, read() would wait for it.
class XModifierQuestion {
  public:
    explicit XModifierQuestion(xcb_connection_t* connection);
    // Once. All zero where the server is gone.
    XModifiers read() const;

  private:
    xcb_connection_t* connection_;
    xcb_get_modifier_mapping_cookie_t keysOfModifiers_{};
    xcb_get_keyboard_mapping_cookie_t symbolsOfKeys_{};
};

}  // namespace kovra
