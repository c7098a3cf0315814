#pragma once

#include <gtest/gtest.h>
#include <xcb/xcb.h>

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "BLE_kovra/platform/linux/loop/Handles.h"

namespace kovra {

// A tray that embeds windows, on the X server in $DISPLAY: a client that owns the screen's tray selection. It embeds
// nothing. The destructor disconnects it.
class StandInTray {
  public:
    StandInTray() {
        EXPECT_EQ(xcb_connection_has_error(x()), 0);
        const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(x())).data;
        window_ = xcb_generate_id(x());
        xcb_create_window(x(), 0, window_, screen->root, 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY, 0, 0, nullptr);
        root_ = screen->root;
    }
    // Takes the selection, and announces that to all clients.
    void appear() {
        const xcb_atom_t selection = atom("_NET_SYSTEM_TRAY_S0");
        xcb_set_selection_owner(x(), window_, selection, XCB_CURRENT_TIME);
        xcb_client_message_event_t event{};
        event.response_type = XCB_CLIENT_MESSAGE;
        event.format = 32;
        event.window = root_;
        event.type = atom("MANAGER");
        event.data.data32[1] = selection;
        event.data.data32[2] = window_;
        xcb_send_event(x(), 0, root_, XCB_EVENT_MASK_STRUCTURE_NOTIFY, reinterpret_cast<const char*>(&event));
        sync();
    }
    // Announces the color of symbolic icons, as 0xRRGGBB.
    void announce(std::uint32_t color) {
        const auto wide = [color](unsigned shift) { return (color >> shift & 0xFFU) * 0x101U; };
        std::vector<std::uint32_t> numbers{wide(16), wide(8), wide(0)};
        numbers.insert(numbers.end(), {0xCC00, 0, 0, 0xF500, 0x7900, 0x3E00, 0x4E00, 0x9A00, 0x0600});
        announce(numbers, XCB_ATOM_CARDINAL);
    }
    void announce(const std::vector<std::uint32_t>& numbers, xcb_atom_t type) {
        xcb_change_property(x(), XCB_PROP_MODE_REPLACE, window_, atom("_NET_SYSTEM_TRAY_COLORS"), type, 32,
                            static_cast<std::uint32_t>(numbers.size()), numbers.data());
        sync();
    }
    void announceNothing() {
        xcb_delete_property(x(), window_, atom("_NET_SYSTEM_TRAY_COLORS"));
        sync();
    }
    void changeAnotherProperty() {
        constexpr std::uint32_t value = 0;
        xcb_change_property(x(), XCB_PROP_MODE_REPLACE, window_, atom("_NET_SYSTEM_TRAY_ORIENTATION"),
                            XCB_ATOM_CARDINAL, 32, 1, &value);
        sync();
    }
    xcb_window_t window() const { return window_; }

  private:
    xcb_connection_t* x() const { return connection_.get(); }
    xcb_atom_t atom(std::string_view name) const {
        const Allocated<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
            x(), xcb_intern_atom(x(), 0, static_cast<std::uint16_t>(name.size()), name.data()), nullptr));
        return reply->atom;
    }
    void sync() const {
        const Allocated<xcb_get_input_focus_reply_t> reply(
            xcb_get_input_focus_reply(x(), xcb_get_input_focus(x()), nullptr));
    }

    Handle<xcb_connection_t, xcb_disconnect> connection_{xcb_connect(nullptr, nullptr)};
    xcb_window_t window_ = XCB_NONE;
    xcb_window_t root_ = XCB_NONE;
};

}  // namespace kovra
