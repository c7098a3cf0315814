#include "BLE_kovra/platform/linux/tray/XEmbedTrayWatch.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "BLE_kovra/platform/linux/loop/Handles.h"

namespace kovra {

namespace {

xcb_intern_atom_cookie_t requestAtom(xcb_connection_t* connection, std::string_view name) {
    return xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
}

xcb_atom_t atom(xcb_connection_t* connection, xcb_intern_atom_cookie_t cookie) {
    const Allocated<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection, cookie, nullptr));
    return reply ? reply->atom : XCB_NONE;
}

// Returns the number of the connection's own screen in the server's list of screens.
int screenNumber(const XConnection& x) {
    int number = 0;
    for (auto each = xcb_setup_roots_iterator(xcb_get_setup(x.get())); each.rem > 0; xcb_screen_next(&each), ++number) {
        if (each.data->root == x.roots().front()) return number;
    }
    return 0;
}

void select(const XConnection& x, xcb_window_t window, std::uint32_t events) {
    xcb_change_window_attributes(x.get(), window, XCB_CW_EVENT_MASK, &events);
}

}  // namespace

XEmbedTrayWatch::XEmbedTrayWatch(XConnection& x, std::function<void(bool)> changed)
    : x_(x), changed_(std::move(changed)) {
    listening_ = x_.listen([this](const xcb_generic_event_t& event) { receive(event); });
    const auto selection = requestAtom(x_.get(), "_NET_SYSTEM_TRAY_S" + std::to_string(screenNumber(x_)));
    const auto announcement = requestAtom(x_.get(), "MANAGER");
    announcements_ = x_.receiveAnnouncements();
    pendingReply_ = x_.whenServed([this, selection, announcement] {
        pendingReply_.reset();
        selection_ = atom(x_.get(), selection);
        announcement_ = atom(x_.get(), announcement);
        queryOwner();
    });
}

XEmbedTrayWatch::~XEmbedTrayWatch() {
    if (candidate_ != XCB_NONE) select(x_, candidate_, XCB_EVENT_MASK_NO_EVENT);
    x_.flush();
}

void XEmbedTrayWatch::receive(const xcb_generic_event_t& event) {
    if (XConnection::kindOf(event) == XCB_CLIENT_MESSAGE) {
        const auto& message = reinterpret_cast<const xcb_client_message_event_t&>(event);
        if (message.type == announcement_ && message.format == 32 && message.data.data32[1] == selection_) queryOwner();
    } else if (XConnection::kindOf(event) == XCB_DESTROY_NOTIFY) {
        if (reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window == candidate_) queryOwner();
    }
}

void XEmbedTrayWatch::queryOwner() {
    if (pendingReply_) xcb_discard_reply(x_.get(), ownerRequest_.sequence);
    ownerRequest_ = xcb_get_selection_owner(x_.get(), selection_);
    pendingReply_ = x_.whenServed([this] { receiveOwner(); });
}

void XEmbedTrayWatch::receiveOwner() {
    pendingReply_.reset();
    const Allocated<xcb_get_selection_owner_reply_t> reply(
        xcb_get_selection_owner_reply(x_.get(), ownerRequest_, nullptr));
    const xcb_window_t now = reply ? reply->owner : XCB_NONE;
    if (std::exchange(candidate_, now) != now) {
        // The owner may have exited between the query and the selection of its events, so query once more.
        if (now != XCB_NONE) select(x_, now, XCB_EVENT_MASK_STRUCTURE_NOTIFY);
        queryOwner();
    } else if (std::exchange(owner_, now) != now) {
        changed_(now != XCB_NONE);
    }
}

}  // namespace kovra
