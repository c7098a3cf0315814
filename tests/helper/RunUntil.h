#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "helper/Loop.h"

namespace kovra::helper {

// Runs the loop until the condition holds or the timeout expires. Returns whether the condition holds.
inline bool runUntil(Loop& loop, const std::function<bool()>& condition,
                     std::chrono::milliseconds timeout = std::chrono::seconds(20)) {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    std::unique_ptr<Loop::Watch> tick;
    const std::function<void()> check = [&] {
        if (condition() || std::chrono::steady_clock::now() >= deadline)
            loop.stop();
        else
            tick = loop.after(std::chrono::milliseconds(1), check);
    };
    tick = loop.after(std::chrono::milliseconds(0), check);
    loop.run();
    return condition();
}

// Handles all events of files, processes and sockets that have occurred so far. sd-event finds all of them in the
// iteration in which the first timer expires. It handles them before the second timer, which it finds in a later
// iteration.
inline void handleEvents(Loop& loop) {
    constexpr std::chrono::milliseconds now{0};
    std::unique_ptr<Loop::Watch> timer;
    timer = loop.after(now, [&] { timer = loop.after(now, [&] { loop.stop(); }); });
    loop.run();
}

inline void runFor(Loop& loop, std::chrono::milliseconds time) {
    runUntil(loop, [] { return false; }, time);
}

}  // namespace kovra::helper
