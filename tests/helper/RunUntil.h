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

// Runs the loop for this time.
inline void runFor(Loop& loop, std::chrono::milliseconds time) {
    runUntil(
        loop, [] { return false; }, time);
}

}  // namespace kovra::helper
