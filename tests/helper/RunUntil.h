#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "helper/Loop.h"

namespace kovra::helper {

// Turns the loop until the condition holds. Whether it came true in time.
inline bool runUntil(Loop& loop, const std::function<bool()>& condition,
                     std::chrono::milliseconds atMost = std::chrono::seconds(20)) {
    const auto deadline = std::chrono::steady_clock::now() + atMost;
    std::unique_ptr<Loop::Watch> tick;
    const std::function<void()> look = [&] {
        if (condition() || std::chrono::steady_clock::now() >= deadline)
            loop.stop();
        else
            tick = loop.after(std::chrono::milliseconds(1), look);
    };
    tick = loop.after(std::chrono::milliseconds(0), look);
    loop.run();
    return condition();
}

// Turns the loop for that long.
inline void runFor(Loop& loop, std::chrono::milliseconds time) {
    runUntil(
        loop, [] { return false; }, time);
}

}  // namespace kovra::helper
