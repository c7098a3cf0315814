#include "BLE_kovra/platform/linux/start/XLaunch.h"

#include <xcb/xcbext.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "BLE_kovra/platform/linux/start/Deadline.h"
#include "BLE_kovra/platform/linux/x11/XAtoms.h"

namespace kovra {

XLaunch::XLaunch(XConnection& x) : x_(x) {
    const auto begin = requestAtom(x_, "_NET_STARTUP_INFO_BEGIN");
    const auto rest = requestAtom(x_, "_NET_STARTUP_INFO");
    pendingReply_ = x_.whenServed([this, begin, rest] {
        pendingReply_.reset();
        begin_ = atomOf(x_, begin);
        rest_ = atomOf(x_, rest);
        if (!ids_.empty()) send();
    });
}

void XLaunch::end(const std::string& id) {
    ids_.push_back(id);
    if (!pendingReply_) send();
}

void XLaunch::finish() {
    const unsigned int request = xcb_get_input_focus(x_.get()).sequence;
    xcb_flush(x_.get());
    const Deadline deadline;
    void* reply = nullptr;
    while (xcb_poll_for_reply(x_.get(), request, &reply, nullptr) == 0) {
        if (!deadline.waitFor(xcb_get_file_descriptor(x_.get()))) return;
    }
    std::free(reply);
}

// Receivers put the parts of a message together by the window in them, which exists only for this purpose.
void XLaunch::send() {
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
        part.type = begin_;
        for (std::size_t sent = 0; sent < text.size(); sent += sizeof part.data.data8) {
            part.data = {};
            const std::size_t size = std::min(sizeof part.data.data8, text.size() - sent);
            std::memcpy(part.data.data8, text.data() + sent, size);
            xcb_send_event(x_.get(), 0, root, XCB_EVENT_MASK_PROPERTY_CHANGE, reinterpret_cast<const char*>(&part));
            part.type = rest_;
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
