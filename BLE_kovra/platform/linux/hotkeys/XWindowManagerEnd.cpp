#include "BLE_kovra/platform/linux/hotkeys/XWindowManagerEnd.h"

#include <cstdint>
#include <utility>

#include "BLE_kovra/platform/linux/loop/Handles.h"
#include "BLE_kovra/platform/linux/x11/XAtoms.h"

namespace kovra {

namespace {

void selectEvents(const XConnection& x, xcb_window_t window, std::uint32_t events) {
    xcb_change_window_attributes(x.get(), window, XCB_CW_EVENT_MASK, &events);
}

}  // namespace

XWindowManagerEnd::XWindowManagerEnd(XConnection& x, std::function<void()> ended)
    : x_(x),
      ended_(std::move(ended)),
      listening_(x.listen([this](const xcb_generic_event_t& event) { receive(event); })) {
    const auto selection = requestAtom(x_, screenSelection(x_, "WM_S"));
    pendingReply_ = x_.whenServed([this, selection] {
        selection_ = atomOf(x_, selection);
        queryOwner();
    });
}

XWindowManagerEnd::~XWindowManagerEnd() {
    if (pendingReply_) xcb_discard_reply(x_.get(), request_.sequence);
    if (owner_ != XCB_NONE) selectEvents(x_, owner_, XCB_EVENT_MASK_NO_EVENT);
    x_.flush();
}

void XWindowManagerEnd::receive(const xcb_generic_event_t& event) {
    if (XConnection::kindOf(event) != XCB_DESTROY_NOTIFY || owner_ == XCB_NONE) return;
    if (reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window == owner_) report();
}

void XWindowManagerEnd::queryOwner() {
    request_ = xcb_get_selection_owner(x_.get(), selection_);
    pendingReply_ = x_.whenServed([this] { receiveOwner(); });
}

// The owner may have ended before its events were selected, so it is queried again until a reply repeats the last one.
void XWindowManagerEnd::receiveOwner() {
    pendingReply_.reset();
    const Allocated<xcb_get_selection_owner_reply_t> reply(xcb_get_selection_owner_reply(x_.get(), request_, nullptr));
    const xcb_window_t now = reply ? reply->owner : XCB_NONE;
    if (owner_ == now) return;
    if (owner_ != XCB_NONE) return report();
    owner_ = now;
    selectEvents(x_, owner_, XCB_EVENT_MASK_STRUCTURE_NOTIFY);
    queryOwner();
}

void XWindowManagerEnd::report() {
    const auto ended = ended_;  // the function may destroy this object
    owner_ = XCB_NONE;
    ended();
}

}  // namespace kovra
