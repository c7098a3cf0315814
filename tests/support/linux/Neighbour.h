#pragma once

#include <unistd.h>
#include <xcb/xcb.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "BLE_kovra/platform/linux/loop/Handles.h"

namespace kovra {

// Another program on the X server. It has a window that receives typed keys, and it can find out which window has the
// keyboard focus.
class Neighbour {
  public:
    Neighbour() : connection_(xcb_connect(nullptr, nullptr)) {
        root_ = xcb_setup_roots_iterator(xcb_get_setup(x())).data->root;
    }

    void show(std::string_view title) {
        window_ = xcb_generate_id(x());
        const std::uint32_t events = XCB_EVENT_MASK_KEY_PRESS;
        xcb_create_window(x(), XCB_COPY_FROM_PARENT, window_, root_, 0, 0, 1'000, 700, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                          XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
        xcb_change_property(x(), XCB_PROP_MODE_REPLACE, window_, atom("_NET_WM_NAME"), atom("UTF8_STRING"), 8,
                            std::uint32_t(title.size()), title.data());
        xcb_map_window(x(), window_);
        takeKeyboard();
    }
    // Takes the keyboard focus, as if the user had clicked the window.
    void takeKeyboard() {
        const std::uint32_t above = XCB_STACK_MODE_ABOVE;
        xcb_configure_window(x(), window_, XCB_CONFIG_WINDOW_STACK_MODE, &above);
        if (rootHas("_NET_SUPPORTING_WM_CHECK")) {
            // A window manager that has just started may have missed the first request.
            while (property(window_, "WM_STATE").empty()) {
                xcb_map_window(x(), window_);
                ::usleep(10'000);
            }
            activate();
        } else {
            sync();
            xcb_set_input_focus(x(), XCB_INPUT_FOCUS_PARENT, window_, XCB_CURRENT_TIME);
        }
        sync();
    }
    // Returns the number of keys pressed so far. Reports the time of each press to the window manager, as toolkits do.
    int keysPressed() {
        sync();
        while (const Handle<xcb_generic_event_t, std::free> event{xcb_poll_for_event(x())}) {
            if ((event->response_type & 0x7F) != XCB_KEY_PRESS) continue;
            const std::uint32_t time = reinterpret_cast<const xcb_key_press_event_t&>(*event).time;
            xcb_change_property(x(), XCB_PROP_MODE_REPLACE, window_, atom("_NET_WM_USER_TIME"), XCB_ATOM_CARDINAL, 32,
                                1, &time);
            ++keys_;
        }
        sync();
        return keys_;
    }

    // Returns the title of the window with the focus, or of its nearest ancestor with a title. Empty if there is none.
    std::string titleWithTheKeyboard() {
        const Handle<xcb_get_input_focus_reply_t, std::free> focus(
            xcb_get_input_focus_reply(x(), xcb_get_input_focus(x()), nullptr));
        for (xcb_window_t window = focus ? focus->focus : XCB_NONE; window > XCB_INPUT_FOCUS_POINTER_ROOT;) {
            if (const std::string title = property(window, "_NET_WM_NAME"); !title.empty()) return title;
            const Handle<xcb_query_tree_reply_t, std::free> tree(
                xcb_query_tree_reply(x(), xcb_query_tree(x(), window), nullptr));
            window = tree ? tree->parent : XCB_NONE;
        }
        return {};
    }
    // Returns the title of the topmost visible window that has one.
    std::string topmostTitle() {
        const Handle<xcb_query_tree_reply_t, std::free> tree(
            xcb_query_tree_reply(x(), xcb_query_tree(x(), root_), nullptr));
        if (!tree) return {};
        for (int i = xcb_query_tree_children_length(tree.get()); i > 0; --i) {
            const std::string title = titleInside(xcb_query_tree_children(tree.get())[i - 1]);
            if (!title.empty()) return title;
        }
        return {};
    }
    bool rootHas(std::string_view name) { return !property(root_, name).empty(); }

  private:
    xcb_connection_t* x() { return connection_.get(); }

    void activate() {
        xcb_client_message_event_t message{};
        message.response_type = XCB_CLIENT_MESSAGE;
        message.format = 32;
        message.window = window_;
        message.type = atom("_NET_ACTIVE_WINDOW");
        message.data.data32[0] = 2;
        xcb_send_event(x(), 0, root_, XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                       reinterpret_cast<const char*>(&message));
    }
    xcb_atom_t atom(std::string_view name) {
        const Handle<xcb_intern_atom_reply_t, std::free> reply(xcb_intern_atom_reply(
            x(), xcb_intern_atom(x(), 0, static_cast<std::uint16_t>(name.size()), name.data()), nullptr));
        return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
    }
    std::string property(xcb_window_t window, std::string_view name) {
        const Handle<xcb_get_property_reply_t, std::free> reply(
            xcb_get_property_reply(x(), xcb_get_property(x(), 0, window, atom(name), XCB_ATOM_ANY, 0, 1'000), nullptr));
        if (!reply) return {};
        return {static_cast<const char*>(xcb_get_property_value(reply.get())),
                static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
    }
    // Returns the title of the window or of a window inside it. Empty if it is not on the screen or has no title.
    std::string titleInside(xcb_window_t window) {
        const Handle<xcb_get_window_attributes_reply_t, std::free> attributes(
            xcb_get_window_attributes_reply(x(), xcb_get_window_attributes(x(), window), nullptr));
        const Handle<xcb_get_geometry_reply_t, std::free> place(
            xcb_get_geometry_reply(x(), xcb_get_geometry(x(), window), nullptr));
        if (!attributes || attributes->map_state != XCB_MAP_STATE_VIEWABLE) return {};
        if (!place || place->x + place->width <= 0 || place->y + place->height <= 0) return {};
        if (const std::string title = property(window, "_NET_WM_NAME"); !title.empty()) return title;
        const Handle<xcb_query_tree_reply_t, std::free> tree(
            xcb_query_tree_reply(x(), xcb_query_tree(x(), window), nullptr));
        for (int i = 0; tree && i < xcb_query_tree_children_length(tree.get()); ++i) {
            const std::string title = titleInside(xcb_query_tree_children(tree.get())[i]);
            if (!title.empty()) return title;
        }
        return {};
    }
    void sync() {
        const Handle<xcb_get_input_focus_reply_t, std::free> reply(
            xcb_get_input_focus_reply(x(), xcb_get_input_focus(x()), nullptr));
    }

    Handle<xcb_connection_t, xcb_disconnect> connection_;
    xcb_window_t root_ = 0;
    xcb_window_t window_ = 0;
    int keys_ = 0;
};

}  // namespace kovra
