#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace kovra {

// The keyboard with the system's event manager. A press of a hot key goes to the handlers of this application, the last
// installed one first, until one handles it. The press is never passed on to other programs.
struct FakeHotKeys {
    // Presses the key. Returns whether the window in front received the press.
    static bool press(std::uint32_t keyCode, std::uint32_t modifiers);
    // Makes another program the owner of this key from now on.
    static void takeByAnother(std::uint32_t keyCode, std::uint32_t modifiers);
    static void refuseHandlers(bool areRefused);
    static void clear();

    // Returns the requests to the event manager since the last call, in order.
    static std::vector<std::string> takeRequests();
    // Returns the number of handlers and hot keys that are installed now.
    static std::size_t held();
};

}  // namespace kovra
