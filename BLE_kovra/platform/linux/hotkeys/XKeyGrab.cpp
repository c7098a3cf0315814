#include "BLE_kovra/platform/linux/hotkeys/XKeyGrab.h"

#include <algorithm>
#include <utility>

#include "BLE_kovra/platform/linux/loop/Handles.h"

namespace kovra {

XKeyGrab::XKeyGrab(XConnection& connection, xcb_keycode_t key, std::function<void()> pressed,
                   std::function<void(Holder)> held)
    : connection_(connection),
      keyboard_(connection.get()),
      key_(key),
      pressed_(std::move(pressed)),
      held_(std::move(held)),
      listening_(connection.listen([this](const xcb_generic_event_t& event) { receive(event); })) {
    query();
}

XKeyGrab::~XKeyGrab() {
    release();
    connection_.flush();
}

XKeyGrab::States XKeyGrab::statesFor(const XModifiers& modifiers) {
    States states;
    if (modifiers.alt == 0) return states;  // this keyboard has no Alt
    for (const std::uint16_t locks : modifiers.lockSets())
        states.push_back(static_cast<std::uint16_t>(XCB_MOD_MASK_CONTROL | modifiers.alt | locks));
    return states;
}

void XKeyGrab::receive(const xcb_generic_event_t& event) {
    const std::uint8_t kind = XConnection::kindOf(event);
    if (kind == XCB_KEY_RELEASE && event.pad0 == key_) isDown_ = false;
    if (kind == XCB_KEY_PRESS && event.pad0 == key_ && !std::exchange(isDown_, true)) {
        const auto pressed = pressed_;  // the function may destroy this object
        pressed();
    } else if (keyboard_.isMapChange(event) || (managers_ && isAnnouncement(event))) {
        tryAgain();
    }
}

void XKeyGrab::tryAgain() {
    // A new map causes many events; one query at a time is enough.
    isMapStale_ = true;
    if (!modifiers_) query();
}

bool XKeyGrab::isAnnouncement(const xcb_generic_event_t& event) const {
    if (XConnection::kindOf(event) != XCB_CLIENT_MESSAGE) return false;
    const auto& roots = connection_.roots();
    const xcb_window_t window = reinterpret_cast<const xcb_client_message_event_t&>(event).window;
    return std::find(roots.begin(), roots.end(), window) != roots.end();
}

void XKeyGrab::query() {
    isMapStale_ = false;
    modifiers_.emplace(connection_.get());
    keysDown_ = xcb_query_keymap(connection_.get());
    whenAnswered_ = connection_.whenServed([this] { mapReceived(); });
}

void XKeyGrab::mapReceived() {
    States states = statesFor(std::exchange(modifiers_, std::nullopt)->read());
    // The server may drop the event of the key's release when the map changes.
    const Allocated<xcb_query_keymap_reply_t> down{xcb_query_keymap_reply(connection_.get(), keysDown_, nullptr)};
    isDown_ = isDown_ && down && (down->keys[key_ / 8] >> (key_ % 8) & 1) != 0;
    keyboard_.use();
    if (states != grabbed_ || states.empty()) {
        release();
        grab(std::move(states));
    }
    if (isMapStale_) query();
    connection_.flush();
}

void XKeyGrab::grab(States states) {
    constexpr auto windowsSeeIt = 0;
    for (const xcb_window_t root : connection_.roots()) {
        for (const std::uint16_t state : states)
            grabs_.push_back(xcb_grab_key_checked(connection_.get(), windowsSeeIt, root, state, key_,
                                                  XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
    }
    grabbed_ = std::move(states);
    whenGranted_ = connection_.whenServed([this] { checkGrabs(); });
}

void XKeyGrab::checkGrabs() {
    Holder holder = grabbed_.empty() ? Holder::nobody : Holder::us;
    for (const xcb_void_cookie_t request : std::exchange(grabs_, {})) {
        if (const Allocated<xcb_generic_error_t> error{xcb_request_check(connection_.get(), request)})
            holder = Holder::another;
    }
    if (holder == Holder::another) {
        release();
        managers_ = connection_.receiveAnnouncements();
        windowManager_.emplace(connection_, [this] {
            windowManager_.reset();
            tryAgain();
        });
    } else {
        managers_.reset();
        windowManager_.reset();
    }
    connection_.flush();
    const auto held = held_;  // the function may destroy this object
    held(holder);
}

void XKeyGrab::release() {
    for (const xcb_window_t root : connection_.roots()) {
        for (const std::uint16_t state : grabbed_) xcb_ungrab_key(connection_.get(), key_, root, state);
    }
    grabbed_.clear();
    for (const xcb_void_cookie_t request : std::exchange(grabs_, {}))
        xcb_discard_reply(connection_.get(), request.sequence);
    whenGranted_.reset();
}

}  // namespace kovra
