#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "BLE_kovra/platform/linux/loop/Handles.h"
#include "BLE_kovra/platform/linux/x11/XConnection.h"

namespace kovra {

// Requests the atom of a name. Read the reply with atomOf() once the server has served the request.
inline xcb_intern_atom_cookie_t requestAtom(const XConnection& x, std::string_view name) {
    return xcb_intern_atom(x.get(), 0, static_cast<std::uint16_t>(name.size()), name.data());
}

// Returns XCB_NONE if the server has no atom for the name, or has disconnected.
inline xcb_atom_t atomOf(const XConnection& x, xcb_intern_atom_cookie_t request) {
    const Allocated<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(x.get(), request, nullptr));
    return reply ? reply->atom : XCB_NONE;
}

// Returns the name of a selection of the connection's own screen, which is `name` with the number of the screen.
inline std::string screenSelection(const XConnection& x, const std::string& name) {
    int number = 0;
    for (auto each = xcb_setup_roots_iterator(xcb_get_setup(x.get())); each.rem > 0; xcb_screen_next(&each), ++number) {
        if (each.data->root == x.roots().front()) return name + std::to_string(number);
    }
    return name + '0';
}

// Returns the name of the selection that the tray owns.
inline std::string traySelection(const XConnection& x) { return screenSelection(x, "_NET_SYSTEM_TRAY_S"); }

}  // namespace kovra
