#include "BLE_kovra/platform/linux/start/XEmbedTrayQuery.h"

#include <utility>

#include "BLE_kovra/platform/linux/loop/Handles.h"
#include "BLE_kovra/platform/linux/x11/XAtoms.h"

namespace kovra {

XEmbedTrayQuery::XEmbedTrayQuery(XConnection& x, std::function<void(bool)> answered)
    : x_(x), answered_(std::move(answered)) {
    const auto selection = requestAtom(x_, traySelection(x_));
    pendingReply_ = x_.whenServed([this, selection] {
        const auto owner = xcb_get_selection_owner(x_.get(), atomOf(x_, selection));
        pendingReply_ = x_.whenServed([this, owner] {
            const Allocated<xcb_get_selection_owner_reply_t> found(
                xcb_get_selection_owner_reply(x_.get(), owner, nullptr));
            const auto answer = answered_;  // a copy, because the callback may destroy this object
            answer(found && found->owner != XCB_NONE);
        });
    });
}

}  // namespace kovra
