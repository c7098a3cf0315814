#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace kovra {

// The keyboard as the system's event manager serves it. A press of a hot key reaches the handlers of this application,
// the last installed first, until one has dealt with it, and travels no further whatever they answer.
struct FakeHotKeys {
    // Whether the window in front got it.
    static bool press(std::uint32_t keyCode, std::uint32_t modifiers);
    // From now on another program has this key.
    static void takeByAnother(std::uint32_t keyCode, std::uint32_t modifiers);
    static void refuseHandlers(bool areRefused);
    static void clear();

    // What was asked of the event manager, in order.
    static std::vector<std::string> takeRequests();
    // What is installed and registered by now.
    static std::size_t held();
};

}  // namespace kovra
