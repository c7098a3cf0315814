#pragma once

#include <gtest/gtest.h>
#include <xcb/xcb.h>
#include <xcb/xtest.h>

#include <cstdint>
#include <cstdlib>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "BLE_kovra/platform/linux/loop/Handles.h"

namespace kovra {

// Simulates a user who looks at the screen of the X server and uses the mouse and the keyboard.
class Onlooker {
  public:
    struct Place {
        int x = 0, y = 0, width = 0, height = 0;
        bool operator==(const Place&) const = default;
    };
    using Pixels = std::vector<std::uint32_t>;  // 0xRRGGBB, row by row

    Onlooker()
        : connection_(xcb_connect(nullptr, nullptr)),
          root_(xcb_setup_roots_iterator(xcb_get_setup(x())).data->root),
          title_(atom("_NET_WM_NAME")) {}

    // Returns the place of the visible window with this title, even if it is embedded in another.
    std::optional<Place> window(std::string_view title) { return find(root_, title); }
    // Returns whether the window with this title has the keyboard focus.
    bool hasKeyboard(std::string_view title) {
        const Handle<xcb_get_input_focus_reply_t, std::free> reply(
            xcb_get_input_focus_reply(x(), xcb_get_input_focus(x()), nullptr));
        return reply && reply->focus > XCB_INPUT_FOCUS_POINTER_ROOT && property(reply->focus, title_) == title;
    }
    Pixels pixels(const Place& place) {
        const auto asked =
            xcb_get_image(x(), XCB_IMAGE_FORMAT_Z_PIXMAP, root_, std::int16_t(place.x), std::int16_t(place.y),
                          std::uint16_t(place.width), std::uint16_t(place.height), ~0U);
        const Handle<xcb_get_image_reply_t, std::free> reply(xcb_get_image_reply(x(), asked, nullptr));
        if (!reply) return {};
        const auto* first = reinterpret_cast<const std::uint32_t*>(xcb_get_image_data(reply.get()));
        Pixels pixels(first, first + std::size_t(place.width) * std::size_t(place.height));
        for (std::uint32_t& each : pixels) each &= 0xFF'FF'FF;
        return pixels;
    }
    std::set<std::uint32_t> colors(const Place& place) {
        const Pixels seen = pixels(place);
        return {seen.begin(), seen.end()};
    }

    void movePointer(int toX, int toY) {
        xcb_test_fake_input(x(), XCB_MOTION_NOTIFY, 0, XCB_CURRENT_TIME, root_, std::int16_t(toX), std::int16_t(toY),
                            0);
        xcb_flush(x());
    }
    void click(std::uint8_t button, int atX, int atY) {
        movePointer(atX, atY);
        xcb_test_fake_input(x(), XCB_BUTTON_PRESS, button, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
        xcb_test_fake_input(x(), XCB_BUTTON_RELEASE, button, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
        xcb_flush(x());
    }
    void click(std::uint8_t button, const Place& place) {
        click(button, place.x + place.width / 2, place.y + place.height / 2);
    }
    // Presses the key. If `held` is not 0, that key is held down meanwhile.
    void tap(xcb_keycode_t key, xcb_keycode_t held = 0) {
        if (held != 0) xcb_test_fake_input(x(), XCB_KEY_PRESS, held, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
        xcb_test_fake_input(x(), XCB_KEY_PRESS, key, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
        xcb_test_fake_input(x(), XCB_KEY_RELEASE, key, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
        if (held != 0) xcb_test_fake_input(x(), XCB_KEY_RELEASE, held, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
        xcb_flush(x());
    }

  private:
    xcb_connection_t* x() { return connection_.get(); }

    xcb_atom_t atom(std::string_view name) {
        const Handle<xcb_intern_atom_reply_t, std::free> reply(xcb_intern_atom_reply(
            x(), xcb_intern_atom(x(), 0, static_cast<std::uint16_t>(name.size()), name.data()), nullptr));
        return reply ? reply->atom : XCB_NONE;
    }
    std::string property(xcb_window_t window, xcb_atom_t name) {
        const Handle<xcb_get_property_reply_t, std::free> reply(
            xcb_get_property_reply(x(), xcb_get_property(x(), 0, window, name, XCB_ATOM_ANY, 0, 1'000), nullptr));
        if (!reply) return {};
        return {static_cast<const char*>(xcb_get_property_value(reply.get())),
                static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
    }
    bool isSeen(xcb_window_t window) {
        const Handle<xcb_get_window_attributes_reply_t, std::free> reply(
            xcb_get_window_attributes_reply(x(), xcb_get_window_attributes(x(), window), nullptr));
        return reply && reply->map_state == XCB_MAP_STATE_VIEWABLE;
    }
    std::optional<Place> placeOf(xcb_window_t window) {
        const auto size = xcb_get_geometry(x(), window);
        const auto corner = xcb_translate_coordinates(x(), window, root_, 0, 0);
        const Handle<xcb_get_geometry_reply_t, std::free> one(xcb_get_geometry_reply(x(), size, nullptr));
        const Handle<xcb_translate_coordinates_reply_t, std::free> other(
            xcb_translate_coordinates_reply(x(), corner, nullptr));
        if (!one || !other) return std::nullopt;
        return Place{other->dst_x, other->dst_y, one->width, one->height};
    }
    std::optional<Place> find(xcb_window_t parent, std::string_view title) {
        const Handle<xcb_query_tree_reply_t, std::free> tree(
            xcb_query_tree_reply(x(), xcb_query_tree(x(), parent), nullptr));
        if (!tree) return std::nullopt;
        const xcb_window_t* children = xcb_query_tree_children(tree.get());
        for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i) {
            if (property(children[i], title_) == title && isSeen(children[i])) return placeOf(children[i]);
            if (const auto inside = find(children[i], title)) return inside;
        }
        return std::nullopt;
    }

    Handle<xcb_connection_t, xcb_disconnect> connection_;
    xcb_window_t root_;
    xcb_atom_t title_;
};

}  // namespace kovra
