#include "bench/instruments/XScreen.h"

#include <cstdlib>
#include <cstring>
#include <memory>

#include "bench/instruments/Clocks.h"
#include "bench/instruments/Tell.h"

namespace bench {
namespace {

constexpr std::uint32_t dockRequest = 0;
constexpr std::uint32_t iconExtent = 22;

template <class T>
std::unique_ptr<T, decltype(&std::free)> malloced(T* pointer) {
    return {pointer, std::free};
}

xcb_client_message_event_t message(xcb_window_t window, xcb_atom_t type) {
    xcb_client_message_event_t made{};
    made.response_type = XCB_CLIENT_MESSAGE;
    made.format = 32;
    made.window = window;
    made.type = type;
    return made;
}

template <class Event>
const Event& as(const xcb_generic_event_t& event) {
    return reinterpret_cast<const Event&>(event);
}

}  // namespace

XScreen::XScreen(const Subject& subject) : subject_(subject), x_(xcb_connect(nullptr, nullptr)) {
    const xcb_query_extension_reply_t* damage = xcb_get_extension_data(x_, &xcb_damage_id);
    if (xcb_connection_has_error(x_) != 0 || damage == nullptr || damage->present == 0) std::exit(1);
    damageNotify_ = static_cast<std::uint8_t>(damage->first_event + XCB_DAMAGE_NOTIFY);
    malloced(xcb_damage_query_version_reply(x_, xcb_damage_query_version(x_, 1, 1), nullptr));
    screen_ = xcb_setup_roots_iterator(xcb_get_setup(x_)).data;
    const std::uint32_t events = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(x_, screen_->root, XCB_CW_EVENT_MASK, &events);
    becomeTray();
    xcb_flush(x_);
}

XScreen::~XScreen() { xcb_disconnect(x_); }

xcb_atom_t XScreen::atom(const char* name) const {
    const auto question = xcb_intern_atom(x_, 0, static_cast<std::uint16_t>(std::strlen(name)), name);
    const auto reply = malloced(xcb_intern_atom_reply(x_, question, nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

void XScreen::becomeTray() {
    trayRequest_ = atom("_NET_SYSTEM_TRAY_OPCODE");
    tray_ = xcb_generate_id(x_);
    const std::uint32_t unmanaged = 1;
    xcb_create_window(x_, XCB_COPY_FROM_PARENT, tray_, screen_->root, 0, 0, 400, iconExtent + 2, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, screen_->root_visual, XCB_CW_OVERRIDE_REDIRECT, &unmanaged);
    xcb_map_window(x_, tray_);
    const xcb_atom_t selection = atom("_NET_SYSTEM_TRAY_S0");
    const std::uint32_t horizontal = 0;
    xcb_change_property(x_, XCB_PROP_MODE_REPLACE, tray_, atom("_NET_SYSTEM_TRAY_ORIENTATION"), XCB_ATOM_CARDINAL, 32,
                        1, &horizontal);
    xcb_change_property(x_, XCB_PROP_MODE_REPLACE, tray_, atom("_NET_SYSTEM_TRAY_VISUAL"), XCB_ATOM_VISUALID, 32, 1,
                        &screen_->root_visual);
    xcb_set_selection_owner(x_, tray_, selection, XCB_CURRENT_TIME);
    xcb_client_message_event_t news = message(screen_->root, atom("MANAGER"));
    news.data.data32[1] = selection;
    news.data.data32[2] = tray_;
    xcb_send_event(x_, 0, screen_->root, XCB_EVENT_MASK_STRUCTURE_NOTIFY, reinterpret_cast<const char*>(&news));
}

bool XScreen::answer() {
    while (const auto event = malloced(xcb_poll_for_event(x_))) {
        const auto kind = static_cast<std::uint8_t>(event->response_type & 0x7f);
        if (kind == XCB_CLIENT_MESSAGE) {
            const auto& request = as<xcb_client_message_event_t>(*event);
            if (request.type == trayRequest_ && request.data.data32[1] == dockRequest) dock(request.data.data32[2]);
        } else if (kind == XCB_MAP_NOTIFY) {
            windowCame(as<xcb_map_notify_event_t>(*event));
        } else if (kind == XCB_UNMAP_NOTIFY) {
            windowWent(as<xcb_unmap_notify_event_t>(*event));
        } else if (kind == damageNotify_) {
            drawn();
        }
    }
    xcb_flush(x_);
    return xcb_connection_has_error(x_) == 0;
}

void XScreen::dock(xcb_window_t icon) {
    const long long moment = now();
    tell(moment, "registered %lld", subject_.cpuTimeSoFar());
    const std::uint32_t extent[] = {iconExtent, iconExtent};
    xcb_configure_window(x_, icon, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, extent);
    xcb_reparent_window(x_, icon, tray_, 1, 1);
    xcb_client_message_event_t embedded = message(icon, atom("_XEMBED"));
    embedded.data.data32[3] = tray_;
    xcb_send_event(x_, 0, icon, XCB_EVENT_MASK_NO_EVENT, reinterpret_cast<const char*>(&embedded));
    xcb_map_window(x_, icon);
}

void XScreen::watchForWindow() {
    stopWatching();
    hasCome_ = false;
    drawings_ = xcb_generate_id(x_);
    xcb_damage_create(x_, drawings_, screen_->root, XCB_DAMAGE_REPORT_LEVEL_RAW_RECTANGLES);
    // Discard the initial report, which covers the whole screen, before anything is drawn.
    malloced(xcb_get_input_focus_reply(x_, xcb_get_input_focus(x_), nullptr));
    answer();
}

void XScreen::stopWatching() {
    if (drawings_ != 0) xcb_damage_destroy(x_, drawings_);
    drawings_ = 0;
}

void XScreen::windowCame(const xcb_map_notify_event_t& event) {
    if (event.event != screen_->root || event.override_redirect != 0) return;
    newest_ = event.window;
    hasCome_ = true;
    tell(now(), "mapped");
}

void XScreen::windowWent(const xcb_unmap_notify_event_t& event) {
    // Toolkits also send a synthetic event, for window managers.
    const bool isSent = (event.response_type & 0x80) != 0;
    if (event.window == newest_ && !isSent) tell(now(), "gone");
}

void XScreen::drawn() {
    if (!hasCome_ || drawings_ == 0) return;
    tell(now(), "painted");
    stopWatching();
}

void XScreen::closeWindow() {
    xcb_client_message_event_t request = message(newest_, atom("WM_PROTOCOLS"));
    request.data.data32[0] = atom("WM_DELETE_WINDOW");
    xcb_send_event(x_, 0, newest_, XCB_EVENT_MASK_NO_EVENT, reinterpret_cast<const char*>(&request));
    xcb_flush(x_);
}

}  // namespace bench
