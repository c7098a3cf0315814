#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "helper/Loop.h"

namespace kovra::helper {

// Runs the loop until the condition holds or the timeout has expired. Returns whether the condition holds.
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

// Handles all events of files, processes and sockets that have happened so far. They are ready as soon as they have
// happened, and sd-event first handles what has been ready for longest. So they precede the second of two timers.
inline void handleEvents(Loop& loop) {
    constexpr std::chrono::milliseconds now{0};
    std::unique_ptr<Loop::Watch> timer;
    timer = loop.after(now, [&] { timer = loop.after(now, [&] { loop.stop(); }); });
    loop.run();
}

// Runs the loop for this time.
inline void runFor(Loop& loop, std::chrono::milliseconds time) {
    runUntil(
        loop, [] { return false; }, time);
}

}  // namespace kovra::helper
