#include "BLE_kovra/platform/linux/x11/XConnection.h"

#include <xcb/xcbext.h>

#include <cstdlib>
#include <utility>

namespace kovra {

namespace {

using Event = Allocated<xcb_generic_event_t>;

std::vector<xcb_window_t> rootsOf(xcb_connection_t* connection, int screen) {
    std::vector<xcb_window_t> roots;
    for (auto each = xcb_setup_roots_iterator(xcb_get_setup(connection)); each.rem > 0; xcb_screen_next(&each))
        roots.push_back(each.data->root);
    const auto own = static_cast<std::size_t>(screen);
    if (own < roots.size()) std::swap(roots[0], roots[own]);
    return roots;
}

}  // namespace

std::unique_ptr<XConnection> XConnection::open(SdEventLoop& loop, std::function<void()> lost) {
    const char* display = std::getenv("DISPLAY");
    if (display == nullptr || *display == '\0') return nullptr;
    int screen = 0;
    Connection connection(xcb_connect(display, &screen));  // never null
    if (xcb_connection_has_error(connection.get()) != 0) return nullptr;
    return std::unique_ptr<XConnection>(new XConnection(loop, std::move(connection), screen, std::move(lost)));
}

XConnection::XConnection(SdEventLoop& loop, Connection connection, int screen, std::function<void()> lost)
    : loop_(loop),
      lost_(std::move(lost)),
      connection_(std::move(connection)),
      roots_(rootsOf(connection_.get(), screen)) {
    watch_ = loop_.watch(xcb_get_file_descriptor(connection_.get()), [this] {
        // Rearm before the events are delivered, so that a listener may run the loop nested.
        watch_->rearm();
        dispatch();
    });
}

XConnection::~XConnection() = default;

void XConnection::flush() {
    xcb_flush(connection_.get());
    // Events that xcb has already read do not make the descriptor readable again.
    loop_.async(lifetime_.guard([this] { dispatch(); }));
}

XConnection::Token XConnection::whenServed(std::function<void()> then) {
    auto held = std::make_shared<const std::function<void()>>(std::move(then));
    // The server answers in order, so any cheap request with a reply will do.
    pending_.push_back({xcb_get_input_focus(connection_.get()).sequence, held});
    flush();
    return held;
}

XConnection::Token XConnection::receiveAnnouncements() {
    if (Token held = announcements_.lock()) return held;
    selectOnRoots(XCB_EVENT_MASK_STRUCTURE_NOTIFY);
    Token token(this, [this](const void*) { selectOnRoots(XCB_EVENT_MASK_NO_EVENT); });
    announcements_ = token;
    return token;
}

void XConnection::selectOnRoots(std::uint32_t events) {
    for (const xcb_window_t root : roots_)
        xcb_change_window_attributes(connection_.get(), root, XCB_CW_EVENT_MASK, &events);
    flush();
}

void XConnection::callPending() {
    while (!pending_.empty()) {
        void* reply = nullptr;
        xcb_generic_error_t* error = nullptr;
        if (xcb_poll_for_reply(connection_.get(), pending_.front().sequence, &reply, &error) == 0) return;
        const Allocated<void> ownedReply(reply);
        const Allocated<xcb_generic_error_t> ownedError(error);
        const auto then = pending_.front().then.lock();
        pending_.pop_front();
        if (then) (*then)();
    }
}

void XConnection::dispatch() {
    if (!watch_) return;
    while (const Event event{xcb_poll_for_event(connection_.get())}) {
        constexpr std::uint8_t error = 0;
        if (event->response_type != error) events_.call(*event);
    }
    if (xcb_connection_has_error(connection_.get()) == 0) {
        callPending();
        return;
    }
    watch_.reset();
    if (const auto lost = lost_) lost();
}

}  // namespace kovra
