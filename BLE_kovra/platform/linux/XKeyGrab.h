#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "BLE_kovra/platform/linux/XConnection.h"
#include "BLE_kovra/platform/linux/XKeyboardExtension.h"

namespace kovra {

struct XModifiers;

// One key of the keyboard with Control and Alt, taken from all windows for as long as this lives.
//
// A press with these modifiers and no others counts, whichever lock keys are on and whichever layout is; a held key is
// one press. Follows the keyboard's map where Alt or a lock key gets another modifier bit.
class XKeyGrab {
  public:
    // Null where another program has the key with any of the lock keys: then none of them is taken.
    static std::unique_ptr<XKeyGrab> take(SdEventLoop& loop, XConnection& connection, xcb_keycode_t key,
                                          std::function<void()> pressed);

    ~XKeyGrab();
    XKeyGrab(const XKeyGrab&) = delete;
    XKeyGrab& operator=(const XKeyGrab&) = delete;

  private:
    using States = std::vector<std::uint16_t>;

    XKeyGrab(SdEventLoop& loop, XConnection& connection, xcb_keycode_t key, std::function<void()> pressed);

    static States statesFor(const XModifiers& modifiers);
    bool grab(States states);
    void release();
    void heard(const xcb_generic_event_t& event);
    void followTheMap();

    SdEventLoop& loop_;
    XConnection& connection_;
    XKeyboardExtension keyboard_;
    const xcb_keycode_t key_;
    const std::function<void()> pressed_;
    States grabbed_;
    bool isDown_ = false;
    bool mapChanged_ = false;
    XConnection::Events::Token listening_;
    std::shared_ptr<XKeyGrab*> self_;  // for blocks that may run when this is gone
};

}  // namespace kovra
