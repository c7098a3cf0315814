#include "BLE_kovra/platform/linux/start/XLaunch.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "BLE_kovra/platform/linux/x11/XAtoms.h"

namespace kovra {

void XLaunch::end(const std::string& id) {
    ids_.push_back(id);
    if (pendingReply_) return;
    const auto begin = requestAtom(x_, "_NET_STARTUP_INFO_BEGIN");
    const auto rest = requestAtom(x_, "_NET_STARTUP_INFO");
    pendingReply_ = x_.whenServed([this, begin, rest] {
        pendingReply_.reset();
        const xcb_atom_t beginName = atomOf(x_, begin);
        send(beginName, atomOf(x_, rest));
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
