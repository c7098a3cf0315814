#include "BLE_kovra/platform/linux/XConnection.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace kovra {

namespace {

using Event = Handle<xcb_generic_event_t, std::free>;

class Held : public XConnection::Listening {
  public:
    explicit Held(std::shared_ptr<XConnection::Listener> listener) : listener_(std::move(listener)) {}

  private:
    std::shared_ptr<XConnection::Listener> listener_;
};

std::vector<xcb_window_t> rootsOf(xcb_connection_t* connection, int screen) {
    std::vector<xcb_window_t> roots;
    for (auto each = xcb_setup_roots_iterator(xcb_get_setup(connection)); each.rem > 0; xcb_screen_next(&each))
        roots.push_back(each.data->root);
    const auto own = static_cast<std::size_t>(screen);
    if (own < roots.size()) std::swap(roots[0], roots[own]);
    return roots;
}

}  // namespace

std::unique_ptr<XConnection> XConnection::open(SdEventLoop& loop) {
    const char* display = std::getenv("DISPLAY");
    if (display == nullptr || *display == '\0') return nullptr;
    int screen = 0;
    Connection connection(xcb_connect(display, &screen));  // never null
    if (xcb_connection_has_error(connection.get()) != 0) return nullptr;
    return std::unique_ptr<XConnection>(new XConnection(loop, std::move(connection), screen));
}

XConnection::XConnection(SdEventLoop& loop, Connection connection, int screen)
    : loop_(loop),
      connection_(std::move(connection)),
      roots_(rootsOf(connection_.get(), screen)),
      self_(std::make_shared<XConnection*>(this)) {
    watch_ = loop_.watch(xcb_get_file_descriptor(connection_.get()), [this] {
        // First, so that a listener may run the loop nested.
        watch_->rearm();
        handOut();
    });
}

XConnection::~XConnection() = default;

void XConnection::flush() {
    xcb_flush(connection_.get());
    // What the library has read already rings no more.
    loop_.async([weak = std::weak_ptr(self_)] {
        if (const auto self = weak.lock()) (*self)->handOut();
    });
}

std::unique_ptr<XConnection::Listening> XConnection::listen(Listener listener) {
    std::erase_if(listeners_, [](const auto& each) { return each.expired(); });
    auto held = std::make_shared<Listener>(std::move(listener));
    listeners_.emplace_back(held);
    return std::make_unique<Held>(std::move(held));
}

void XConnection::handOut() {
    if (!watch_) return;
    while (const Event event{xcb_poll_for_event(connection_.get())}) handOut(*event);
    if (xcb_connection_has_error(connection_.get()) == 0) return;
    watch_.reset();
    if (onLost) onLost();
}

void XConnection::handOut(const xcb_generic_event_t& event) {
    constexpr std::uint8_t error = 0;
    if (event.response_type == error) return;
    for (const auto& each : std::vector(listeners_)) {
        if (const auto listener = each.lock()) (*listener)(event);
    }
}

}  // namespace kovra
