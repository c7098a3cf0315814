#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace kovra {

// The keyboard with the system's event manager. It behaves like the real one in these respects:
//
// - A hot key sends each program that has registered it two events, for the press and for the release. The window in
//   front receives neither.
// - An event goes to the handlers that were installed for its class and kind, the last installed one first, until one
//   handles it.
// - Several programs may register the same hot key, each without options. Then each of them receives the events.
struct FakeHotKeys {
    // Presses and releases the key. Returns whether the window in front received the press.
    static bool press(std::uint32_t keyCode, std::uint32_t modifiers);
    // Makes another program the only owner of this key from now on.
    static void takeByAnother(std::uint32_t keyCode, std::uint32_t modifiers);
    // Registers this key for another program, too, without options.
    static void shareWithAnother(std::uint32_t keyCode, std::uint32_t modifiers);
    // Returns how often the hot key of shareWithAnother() was pressed.
    static int pressedForAnother();
    static void refuseHandlers(bool areRefused);
    static void clear();

    // Returns the requests to the event manager since the last call, in order.
    static std::vector<std::string> takeRequests();
    // Returns the number of handlers and hot keys that are installed now.
    static std::size_t held();
};

}  // namespace kovra
