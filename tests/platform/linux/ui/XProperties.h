#pragma once

#include <xcb/xcb.h>

#include <QRect>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kovra {

// A client that reads the properties and places of windows from the X server, and shows a panel.
class XProperties {
  public:
    XProperties() : server_(xcb_connect(nullptr, nullptr)) {}
    ~XProperties() { xcb_disconnect(server_); }
    XProperties(const XProperties&) = delete;
    XProperties& operator=(const XProperties&) = delete;

    xcb_window_t root() const { return xcb_setup_roots_iterator(xcb_get_setup(server_)).data->root; }
    xcb_atom_t atom(std::string_view name) const {
        const auto cookie = xcb_intern_atom(server_, 0, static_cast<std::uint16_t>(name.size()), name.data());
        const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(server_, cookie, nullptr), &std::free);
        return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
    }
    // Returns the values of a property that consists of 32-bit numbers, or no values if the window does not have the
    // property.
    std::vector<std::uint32_t> values(xcb_window_t window, std::string_view property) const {
        constexpr std::uint32_t limit = 100'000;
        const auto cookie = xcb_get_property(server_, 0, window, atom(property), XCB_ATOM_ANY, 0, limit);
        const Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(server_, cookie, nullptr), &std::free);
        if (!reply) return {};
        const auto* first = static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
        return {first, first + xcb_get_property_value_length(reply.get()) / 4};
    }
    // Returns the bytes of a property, or no bytes if the window does not have the property.
    std::string text(xcb_window_t window, std::string_view property) const {
        constexpr std::uint32_t limit = 1'000;
        const auto cookie = xcb_get_property(server_, 0, window, atom(property), XCB_ATOM_ANY, 0, limit);
        const Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(server_, cookie, nullptr), &std::free);
        if (!reply) return {};
        return {static_cast<const char*>(xcb_get_property_value(reply.get())),
                static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
    }

    // Returns the window's place on the screen, without its frame.
    QRect place(xcb_window_t window) const {
        const auto size = xcb_get_geometry(server_, window);
        const auto corner = xcb_translate_coordinates(server_, window, root(), 0, 0);
        const Reply<xcb_get_geometry_reply_t> one(xcb_get_geometry_reply(server_, size, nullptr), &std::free);
        const Reply<xcb_translate_coordinates_reply_t> other(xcb_translate_coordinates_reply(server_, corner, nullptr),
                                                             &std::free);
        return one && other ? QRect(other->dst_x, other->dst_y, one->width, one->height) : QRect();
    }

    // Shows a panel of this height at the top edge of the screen, and returns its window.
    xcb_window_t showPanel(std::uint32_t height) {
        const xcb_window_t panel = xcb_generate_id(server_);
        const std::uint16_t width = xcb_setup_roots_iterator(xcb_get_setup(server_)).data->width_in_pixels;
        xcb_create_window(server_, XCB_COPY_FROM_PARENT, panel, root(), 0, 0, width, std::uint16_t(height), 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
        const xcb_atom_t dock = atom("_NET_WM_WINDOW_TYPE_DOCK");
        xcb_change_property(server_, XCB_PROP_MODE_REPLACE, panel, atom("_NET_WM_WINDOW_TYPE"), XCB_ATOM_ATOM, 32, 1,
                            &dock);
        const std::uint32_t strut[]{0, 0, height, 0, 0, 0, 0, 0, 0, width, 0, 0};
        xcb_change_property(server_, XCB_PROP_MODE_REPLACE, panel, atom("_NET_WM_STRUT_PARTIAL"), XCB_ATOM_CARDINAL, 32,
                            std::size(strut), strut);
        xcb_map_window(server_, panel);
        xcb_flush(server_);
        return panel;
    }

    // Follows the requests of other clients to be activated by the window manager.
    void followActivations() const {
        const std::uint32_t events = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        xcb_change_window_attributes(server_, root(), XCB_CW_EVENT_MASK, &events);
        xcb_flush(server_);
    }
    // Returns the sources that these requests name: 1 for an application, 2 for the user (a pager).
    std::vector<std::uint32_t> activations() const {
        std::vector<std::uint32_t> sources;
        while (const Reply<xcb_generic_event_t> event{xcb_poll_for_event(server_), &std::free}) {
            if ((event->response_type & 0x7F) != XCB_CLIENT_MESSAGE) continue;
            const auto& message = reinterpret_cast<const xcb_client_message_event_t&>(*event);
            if (message.type == atom("_NET_ACTIVE_WINDOW")) sources.push_back(message.data.data32[0]);
        }
        return sources;
    }

  private:
    template <typename T>
    using Reply = std::unique_ptr<T, decltype(&std::free)>;

    xcb_connection_t* server_;
};

}  // namespace kovra
