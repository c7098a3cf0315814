#include "BLE_kovra/platform/linux/start/XLaunch.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>

#include "BLE_kovra/platform/linux/loop/Handles.h"

namespace kovra {

namespace {

xcb_intern_atom_cookie_t requestName(xcb_connection_t* connection, std::string_view name) {
    return xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
}

xcb_atom_t numberOf(xcb_connection_t* connection, xcb_intern_atom_cookie_t cookie) {
    const Allocated<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection, cookie, nullptr));
    return reply ? reply->atom : XCB_NONE;
}

}  // namespace

void XLaunch::end(const std::string& id) {
    ids_.push_back(id);
    if (pendingReply_) return;
    const auto begin = requestName(x_.get(), "_NET_STARTUP_INFO_BEGIN");
    const auto rest = requestName(x_.get(), "_NET_STARTUP_INFO");
    pendingReply_ = x_.whenServed([this, begin, rest] {
        pendingReply_.reset();
        const xcb_atom_t beginName = numberOf(x_.get(), begin);
        send(beginName, numberOf(x_.get(), rest));
    });
}

// Receivers put the parts of a message together by the window in them, which exists only for this purpose.
void XLaunch::send(xcb_atom_t begin, xcb_atom_t rest) {
    const xcb_window_t root = x_.roots().front();
    const xcb_window_t window = xcb_generate_id(x_.get());
    xcb_create_window(x_.get(), 0, window, root, -1, -1, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0,
                      nullptr);
    for (const std::string& id : std::exchange(ids_, {})) {
        const std::string text = removeMessage(id) + '\0';
        xcb_client_message_event_t part{};
        part.response_type = XCB_CLIENT_MESSAGE;
        part.format = 8;
        part.window = window;
        part.type = begin;
        for (std::size_t sent = 0; sent < text.size(); sent += sizeof part.data.data8) {
            part.data = {};
            const std::size_t size = std::min(sizeof part.data.data8, text.size() - sent);
            std::memcpy(part.data.data8, text.data() + sent, size);
            xcb_send_event(x_.get(), 0, root, XCB_EVENT_MASK_PROPERTY_CHANGE, reinterpret_cast<const char*>(&part));
            part.type = rest;
        }
    }
    xcb_destroy_window(x_.get(), window);
    x_.flush();
}

std::string removeMessage(const std::string& id) {
    std::string text = "remove: ID=";
    for (const char c : id) {
        if (c == ' ' || c == '"' || c == '\\') text += '\\';
        text += c;
    }
    return text;
}

}  // namespace kovra
