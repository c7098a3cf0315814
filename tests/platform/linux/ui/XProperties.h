#pragma once

#include <xcb/xcb.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kovra {

// A client that reads the properties of windows from the X server.
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

  private:
    template <typename T>
    using Reply = std::unique_ptr<T, decltype(&std::free)>;

    xcb_connection_t* server_;
};

}  // namespace kovra
