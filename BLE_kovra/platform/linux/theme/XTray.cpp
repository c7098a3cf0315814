#include "BLE_kovra/platform/linux/theme/XTray.h"

#include <utility>

#include "BLE_kovra/platform/linux/loop/Handles.h"
#include "BLE_kovra/platform/linux/loop/Listeners.h"
#include "BLE_kovra/platform/linux/x11/XAtoms.h"

namespace kovra {

namespace {

void select(const XConnection& x, xcb_window_t window, std::uint32_t events) {
    xcb_change_window_attributes(x.get(), window, XCB_CW_EVENT_MASK, &events);
}

// The tray announces four colors, each as three numbers from 0 to 65535: red, green and blue. The first color is that
// of symbolic icons.
constexpr std::uint32_t announcedNumbers = 12;

std::optional<std::uint32_t> colorIn(const xcb_get_property_reply_t* reply) {
    if (reply == nullptr || reply->type != XCB_ATOM_CARDINAL || reply->format != 32) return std::nullopt;
    if (reply->value_len < announcedNumbers) return std::nullopt;
    const auto* numbers = static_cast<const std::uint32_t*>(xcb_get_property_value(reply));
    const auto byte = [numbers](int which) { return numbers[which] >> 8U & 0xFFU; };
    return byte(0) << 16U | byte(1) << 8U | byte(2);
}

}  // namespace

class XTray::Watch {
  public:
    explicit Watch(XConnection& x) : x_(x) {
        listening_ = x_.listen([this](const xcb_generic_event_t& event) { receive(event); });
        const auto selection = requestAtom(x_, traySelection(x_));
        const auto announcement = requestAtom(x_, "MANAGER");
        const auto colors = requestAtom(x_, "_NET_SYSTEM_TRAY_COLORS");
        announcements_ = x_.receiveAnnouncements();
        pendingReply_ = x_.whenServed([this, selection, announcement, colors] {
            pendingReply_.reset();
            selection_ = atomOf(x_, selection);
            announcement_ = atomOf(x_, announcement);
            colors_ = atomOf(x_, colors);
            queryOwner();
        });
    }
    ~Watch() {
        if (candidate_ != XCB_NONE) select(x_, candidate_, XCB_EVENT_MASK_NO_EVENT);
        x_.flush();
    }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    using Changes = Listeners<const State&>;
    Changes changes;
    State state;

  private:
    void receive(const xcb_generic_event_t& event) {
        const auto kind = XConnection::kindOf(event);
        if (kind == XCB_CLIENT_MESSAGE) {
            const auto& message = reinterpret_cast<const xcb_client_message_event_t&>(event);
            const bool isTray = message.format == 32 && message.data.data32[1] == selection_;
            if (message.type == announcement_ && isTray) queryOwner();
        } else if (kind == XCB_DESTROY_NOTIFY) {
            if (reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window == candidate_) queryOwner();
        } else if (kind == XCB_PROPERTY_NOTIFY) {
            const auto& changed = reinterpret_cast<const xcb_property_notify_event_t&>(event);
            if (changed.window == candidate_ && changed.atom == colors_) queryOwner();
        }
    }

    // Queries the owner and its color again and again until two replies in a row name the same owner.
    void queryOwner() {
        if (pendingReply_) discardReplies();
        ownerRequest_ = xcb_get_selection_owner(x_.get(), selection_);
        colorRequest_ = xcb_get_property(x_.get(), 0, candidate_, colors_, XCB_ATOM_CARDINAL, 0, announcedNumbers);
        pendingReply_ = x_.whenServed([this] { receiveOwner(); });
    }
    void discardReplies() {
        xcb_discard_reply(x_.get(), ownerRequest_.sequence);
        xcb_discard_reply(x_.get(), colorRequest_.sequence);
    }
    void receiveOwner() {
        pendingReply_.reset();
        const Allocated<xcb_get_selection_owner_reply_t> reply(
            xcb_get_selection_owner_reply(x_.get(), ownerRequest_, nullptr));
        const Allocated<xcb_get_property_reply_t> color(xcb_get_property_reply(x_.get(), colorRequest_, nullptr));
        const xcb_window_t now = reply ? reply->owner : XCB_NONE;
        if (std::exchange(candidate_, now) != now) {
            // The owner may have exited or changed its color between the query and the selection of its events, so
            // query once more.
            if (now != XCB_NONE) select(x_, now, XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE);
            queryOwner();
            return;
        }
        const State found{now != XCB_NONE, colorIn(color.get())};
        if (std::exchange(state, found) != found) changes.call(found);
    }

    XConnection& x_;
    xcb_atom_t selection_ = XCB_NONE;
    xcb_atom_t announcement_ = XCB_NONE;
    xcb_atom_t colors_ = XCB_NONE;
    xcb_window_t candidate_ = XCB_NONE;  // the owner according to the last reply
    xcb_get_selection_owner_cookie_t ownerRequest_{};
    xcb_get_property_cookie_t colorRequest_{};
    XConnection::Token announcements_;
    XConnection::Token pendingReply_;
    XConnection::Events::Token listening_;
};

XTray::Token XTray::watch(const std::function<void(const State&)>& changed) {
    struct Held {
        std::shared_ptr<Watch> watch;
        Watch::Changes::Token changes;
        XConnection::Token first;
    };
    auto held = std::make_shared<Held>();
    held->watch = watch_.lock();
    if (!held->watch) {
        held->watch = std::make_shared<Watch>(x_);
        watch_ = held->watch;
    } else if (held->watch->state.isPresent) {
        // Meanwhile there may be another tray, which was reported already.
        held->first = x_.whenServed([watch = held->watch.get(), changed] { changed(watch->state); });
    }
    held->changes = held->watch->changes.add(changed);
    return held;
}

}  // namespace kovra
