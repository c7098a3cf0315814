#include "BLE_kovra/platform/linux/XKeyGrab.h"

#include <cstdlib>
#include <utility>

#include "BLE_kovra/platform/linux/Handles.h"
#include "BLE_kovra/platform/linux/XModifiers.h"

namespace kovra {

namespace {

using Error = Allocated<xcb_generic_error_t>;

}  // namespace

std::unique_ptr<XKeyGrab> XKeyGrab::take(SdEventLoop& loop, XConnection& connection, xcb_keycode_t key,
                                         std::function<void()> pressed) {
    std::unique_ptr<XKeyGrab> grab(new XKeyGrab(loop, connection, key, std::move(pressed)));
    // Two round trips in all: the questions, then the grabs.
    const XModifiers modifiers = XModifierQuestion(connection.get()).read();
    grab->keyboard_.use();
    const bool isOurs = grab->grab(statesFor(modifiers));
    connection.flush();
    return isOurs ? std::move(grab) : nullptr;
}

XKeyGrab::XKeyGrab(SdEventLoop& loop, XConnection& connection, xcb_keycode_t key, std::function<void()> pressed)
    : loop_(loop),
      connection_(connection),
      keyboard_(connection.get()),
      key_(key),
      pressed_(std::move(pressed)),
      listening_(connection.listen([this](const xcb_generic_event_t& event) { heard(event); })),
      self_(std::make_shared<XKeyGrab*>(this)) {}

XKeyGrab::~XKeyGrab() {
    release();
    connection_.flush();
}

XKeyGrab::States XKeyGrab::statesFor(const XModifiers& modifiers) {
    States states;
    if (modifiers.alt == 0) return states;  // a keyboard without Alt
    for (const std::uint16_t locks : modifiers.lockSets())
        states.push_back(static_cast<std::uint16_t>(XCB_MOD_MASK_CONTROL | modifiers.alt | locks));
    return states;
}

bool XKeyGrab::grab(States states) {
    xcb_connection_t* x = connection_.get();
    std::vector<xcb_void_cookie_t> requests;
    constexpr auto windowsSeeIt = 0;
    for (const xcb_window_t root : connection_.roots()) {
        for (const std::uint16_t state : states)
            requests.push_back(
                xcb_grab_key_checked(x, windowsSeeIt, root, state, key_, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
    }
    grabbed_ = std::move(states);
    bool isOurs = !requests.empty() && xcb_connection_has_error(x) == 0;
    for (const xcb_void_cookie_t request : requests) {
        if (const Error error{xcb_request_check(x, request)}) isOurs = false;
    }
    if (!isOurs) release();
    return isOurs;
}

void XKeyGrab::release() {
    for (const xcb_window_t root : connection_.roots()) {
        for (const std::uint16_t state : grabbed_) xcb_ungrab_key(connection_.get(), key_, root, state);
    }
    grabbed_.clear();
}

void XKeyGrab::heard(const xcb_generic_event_t& event) {
    const std::uint8_t kind = XConnection::kindOf(event);
    if (kind == XCB_KEY_RELEASE && event.pad0 == key_) isDown_ = false;
    if (kind == XCB_KEY_PRESS && event.pad0 == key_ && !std::exchange(isDown_, true)) {
        const auto pressed = pressed_;  // which may let go of this
        pressed();
    } else if (keyboard_.tellsOfNewMap(event) && !std::exchange(mapChanged_, true)) {
        // It comes as many events; the map is read once.
        loop_.async([weak = std::weak_ptr(self_)] {
            if (const auto self = weak.lock()) (*self)->followTheMap();
        });
    }
}

void XKeyGrab::followTheMap() {
    mapChanged_ = false;
    xcb_connection_t* x = connection_.get();
    const XModifierQuestion modifiers(x);
    const auto keys = xcb_query_keymap(x);
    States states = statesFor(modifiers.read());
    // A new map may swallow a release.
    const Allocated<xcb_query_keymap_reply_t> down{xcb_query_keymap_reply(x, keys, nullptr)};
    isDown_ = isDown_ && down && (down->keys[key_ / 8] >> (key_ % 8) & 1) != 0;
    if (states != grabbed_) {
        release();
        grab(std::move(states));
    }
    connection_.flush();
}

}  // namespace kovra
