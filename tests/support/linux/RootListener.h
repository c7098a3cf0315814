#pragma once

#include <gtest/gtest.h>
#include <xcb/xcb.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "BLE_kovra/platform/linux/loop/Handles.h"

namespace kovra {

// A client of the X server that receives the messages of the startup notification protocol, as a window manager does.
class RootListener {
  public:
    RootListener()
        : connection_(xcb_connect(nullptr, nullptr)),
          begin_(atom("_NET_STARTUP_INFO_BEGIN")),
          rest_(atom("_NET_STARTUP_INFO")) {
        const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_change_window_attributes(x(), root(), XCB_CW_EVENT_MASK, &events);
        sync();
    }

    // Returns the complete messages that have arrived until now.
    const std::vector<std::string>& messages() {
        sync();
        while (const Handle<xcb_generic_event_t, std::free> event{xcb_poll_for_event(x())}) {
            if ((event->response_type & 0x7F) == XCB_CLIENT_MESSAGE)
                receive(reinterpret_cast<const xcb_client_message_event_t&>(*event));
        }
        return messages_;
    }

    // Makes the selection of the screen's XEmbed tray this client's own.
    void becomeTray() {
        const xcb_window_t window = xcb_generate_id(x());
        xcb_create_window(x(), 0, window, root(), 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY, 0, 0, nullptr);
        xcb_set_selection_owner(x(), window, atom("_NET_SYSTEM_TRAY_S0"), XCB_CURRENT_TIME);
        sync();
    }

  private:
    xcb_connection_t* x() const { return connection_.get(); }
    xcb_window_t root() const { return xcb_setup_roots_iterator(xcb_get_setup(x())).data->root; }
    xcb_atom_t atom(std::string_view name) const {
        const Handle<xcb_intern_atom_reply_t, std::free> reply(xcb_intern_atom_reply(
            x(), xcb_intern_atom(x(), 0, static_cast<std::uint16_t>(name.size()), name.data()), nullptr));
        return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
    }
    void sync() const {
        const Handle<xcb_get_input_focus_reply_t, std::free> reply(
            xcb_get_input_focus_reply(x(), xcb_get_input_focus(x()), nullptr));
    }
    void receive(const xcb_client_message_event_t& part) {
        if (part.type != begin_ && part.type != rest_) return;
        EXPECT_EQ(part.format, 8);
        EXPECT_EQ(part.type == rest_, parts_.contains(part.window)) << "a first part is first, the others are not";
        std::string& text = parts_[part.window];
        for (const std::uint8_t byte : part.data.data8) {
            if (byte == 0) {
                messages_.push_back(text);
                parts_.erase(part.window);
                return;
            }
            text += static_cast<char>(byte);
        }
    }

    Handle<xcb_connection_t, xcb_disconnect> connection_;
    const xcb_atom_t begin_;
    const xcb_atom_t rest_;
    std::map<xcb_window_t, std::string> parts_;  // of incomplete messages
    std::vector<std::string> messages_;
};

}  // namespace kovra
