// The floor of the resident program: the minimal item in the tray, a socket for the kernel's events, and a connection
// to the X server with the hot key grabbed. The resident program must have these open, too. The menu's first entry, the
// hot key and each HID event change the item, and write a flag in the current folder.

#include <linux/netlink.h>
#include <poll.h>
#include <sys/socket.h>
#include <xcb/xcb.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>

#include "bench/floors/BareItem.h"
#include "bench/floors/FlagFile.h"

namespace {

using floors::BareItem;

void switchMuted(BareItem& item) {
    item.switchMuted();
    floors::writeFlag("flag", item.isMuted());
}

void chosen(BareItem& item, BareItem::Entry entry) {
    if (entry == BareItem::Mute) switchMuted(item);
    if (entry == BareItem::Quit) std::exit(0);
}

int openKernelEvents() {
    sockaddr_nl address{};
    address.nl_family = AF_NETLINK;
    address.nl_groups = 1;
    const int events = ::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_KOBJECT_UEVENT);
    if (::bind(events, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) std::exit(1);
    return events;
}

bool receivedHIDEvent(int events) {
    char text[8192];
    bool received = false;
    for (ssize_t length; (length = ::recv(events, text, sizeof text, 0)) > 0;) {
        const std::string_view event(text, static_cast<std::size_t>(length));
        received = received || event.find("SUBSYSTEM=hid") != std::string_view::npos;
    }
    return received;
}

template <class T>
using Malloced = std::unique_ptr<T, decltype(&std::free)>;

// Grabs Ctrl+Alt+T on every key that types "t", in each state of Caps Lock and Num Lock.
void grabHotKey(xcb_connection_t* x) {
    const xcb_setup_t* setup = xcb_get_setup(x);
    const xcb_window_t root = xcb_setup_roots_iterator(setup).data->root;
    const auto count = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
    const xcb_get_keyboard_mapping_cookie_t question = xcb_get_keyboard_mapping(x, setup->min_keycode, count);
    const Malloced<xcb_get_keyboard_mapping_reply_t> map(xcb_get_keyboard_mapping_reply(x, question, nullptr),
                                                         std::free);
    if (!map) return;
    const xcb_keysym_t* symbols = xcb_get_keyboard_mapping_keysyms(map.get());
    for (int key = 0; key < count; ++key) {
        if (symbols[key * map->keysyms_per_keycode] != 't') continue;
        for (const int locks : {0, +XCB_MOD_MASK_LOCK, +XCB_MOD_MASK_2, XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2}) {
            xcb_grab_key(x, 1, root, static_cast<std::uint16_t>(XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1 | locks),
                         static_cast<xcb_keycode_t>(setup->min_keycode + key), XCB_GRAB_MODE_ASYNC,
                         XCB_GRAB_MODE_ASYNC);
        }
    }
    xcb_flush(x);
}

bool wasPressed(xcb_connection_t* x) {
    bool pressed = false;
    while (const Malloced<xcb_generic_event_t> event{xcb_poll_for_event(x), std::free}) {
        pressed = pressed || (event->response_type & 0x7f) == XCB_KEY_PRESS;
    }
    return pressed;
}

}  // namespace

int main() {
    BareItem item(chosen);
    const int events = openKernelEvents();
    xcb_connection_t* x = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(x) != 0) return 1;
    grabHotKey(x);
    while (item.answer() && xcb_connection_has_error(x) == 0) {
        pollfd sources[] = {{sd_bus_get_fd(item.bus()), static_cast<short>(sd_bus_get_events(item.bus())), 0},
                            {events, POLLIN, 0},
                            {xcb_get_file_descriptor(x), POLLIN, 0}};
        ::poll(sources, std::size(sources), -1);
        if (receivedHIDEvent(events)) switchMuted(item);
        if (wasPressed(x)) switchMuted(item);
    }
    return 1;
}
