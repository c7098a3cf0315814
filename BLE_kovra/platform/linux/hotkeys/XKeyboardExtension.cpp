#include "BLE_kovra/platform/linux/hotkeys/XKeyboardExtension.h"

#include <xcb/xcbext.h>

#include <array>
#include <cstdint>
#include <type_traits>

namespace kovra {

namespace {

// Three requests of the extension, as its protocol defines them. xcb's own library for the extension has all requests,
// and would stay loaded for as long as the program runs.
xcb_extension_t extension{"XKEYBOARD", 0};

constexpr std::uint16_t coreKeyboard = 0x0100;

struct UseExtension {
    static constexpr std::uint8_t opcode = 0;
    static constexpr bool hasReply = true;
    std::uint32_t header = 0;  // filled in by xcb, here and below
    std::uint16_t wantedMajor = 1;
    std::uint16_t wantedMinor = 0;
};
static_assert(sizeof(UseExtension) == 8);

constexpr std::uint16_t newKeyboard = 1U << 0;
constexpr std::uint16_t newMap = 1U << 1;
constexpr std::uint16_t keySymbols = 1U << 1;
constexpr std::uint16_t modifierMap = 1U << 2;

struct SelectEvents {
    static constexpr std::uint8_t opcode = 1;
    static constexpr bool hasReply = false;
    std::uint32_t header = 0;
    std::uint16_t device = coreKeyboard;
    std::uint16_t kinds = newKeyboard | newMap;
    std::uint16_t clear = 0;
    std::uint16_t wholeKinds = newKeyboard;
    std::uint16_t mapParts = keySymbols | modifierMap;
    std::uint16_t wantedMapParts = keySymbols | modifierMap;
};
static_assert(sizeof(SelectEvents) == 16);

constexpr std::uint32_t detectableAutoRepeat = 1U << 0;

struct PerClientFlags {
    static constexpr std::uint8_t opcode = 21;
    static constexpr bool hasReply = true;
    std::uint32_t header = 0;
    std::uint16_t device = coreKeyboard;
    std::uint16_t unused = 0;
    std::uint32_t flags = detectableAutoRepeat;
    std::uint32_t values = detectableAutoRepeat;
    std::array<std::uint32_t, 3> resetAtTheEnd{};
};
static_assert(sizeof(PerClientFlags) == 28);

constexpr std::uint8_t newKeyboardNotify = 0;
constexpr std::uint8_t mapNotify = 1;

template <typename Request>
void send(xcb_connection_t* connection, Request request) {
    static_assert(std::is_trivially_copyable_v<Request>);
    const xcb_protocol_request_t kind{
        .count = 1, .ext = &extension, .opcode = Request::opcode, .isvoid = Request::hasReply ? 0 : 1};
    // xcb uses the two elements before the first one that it is given.
    std::array<iovec, 3> parts{};
    parts[2] = {.iov_base = &request, .iov_len = sizeof request};
    const unsigned int sequence = xcb_send_request(connection, 0, &parts[2], &kind);
    if (Request::hasReply) xcb_discard_reply(connection, sequence);
}

}  // namespace

XKeyboardExtension::XKeyboardExtension(xcb_connection_t* connection) : connection_(connection) {
    xcb_prefetch_extension_data(connection, &extension);
}

void XKeyboardExtension::use() {
    if (firstEvent_ >= 0) return;
    const xcb_query_extension_reply_t* found = xcb_get_extension_data(connection_, &extension);
    if (found == nullptr || found->present == 0) return;
    firstEvent_ = found->first_event;
    send(connection_, UseExtension{});
    send(connection_, PerClientFlags{});
    send(connection_, SelectEvents{});
}

bool XKeyboardExtension::isMapChange(const xcb_generic_event_t& event) const {
    const int kind = event.response_type & 0x7F;
    if (kind == XCB_MAPPING_NOTIFY) return true;
    return kind == firstEvent_ && (event.pad0 == newKeyboardNotify || event.pad0 == mapNotify);
}

}  // namespace kovra
