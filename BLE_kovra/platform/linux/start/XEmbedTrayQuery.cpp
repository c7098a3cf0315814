#include "BLE_kovra/platform/linux/start/XEmbedTrayQuery.h"

#include <cstdint>
#include <string>
#include <utility>

#include "BLE_kovra/platform/linux/loop/Handles.h"

namespace kovra {

namespace {

std::string selectionOf(const XConnection& x) {
    int number = 0;
    for (auto each = xcb_setup_roots_iterator(xcb_get_setup(x.get())); each.rem > 0; xcb_screen_next(&each), ++number) {
        if (each.data->root == x.roots().front()) break;
    }
    return "_NET_SYSTEM_TRAY_S" + std::to_string(number);
}

}  // namespace

XEmbedTrayQuery::XEmbedTrayQuery(XConnection& x, std::function<void(bool)> answered)
    : x_(x), answered_(std::move(answered)) {
    const std::string name = selectionOf(x_);
    const auto selection = xcb_intern_atom(x_.get(), 0, static_cast<std::uint16_t>(name.size()), name.data());
    pendingReply_ = x_.whenServed([this, selection] {
        const Allocated<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(x_.get(), selection, nullptr));
        const auto owner = xcb_get_selection_owner(x_.get(), reply ? reply->atom : XCB_NONE);
        pendingReply_ = x_.whenServed([this, owner] {
            const Allocated<xcb_get_selection_owner_reply_t> found(
                xcb_get_selection_owner_reply(x_.get(), owner, nullptr));
            const auto answer = answered_;  // a copy, because the callback may destroy this object
            answer(found && found->owner != XCB_NONE);
        });
    });
}

}  // namespace kovra
