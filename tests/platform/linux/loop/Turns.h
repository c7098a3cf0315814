#pragma once

#include <chrono>
#include <functional>

#include "BLE_kovra/platform/linux/loop/SdEventLoop.h"

namespace kovra {

// Runs the loop until the condition holds, but no longer than `atMost`. Returns whether the condition holds.
inline bool turnUntil(SdEventLoop& loop, const std::function<bool()>& condition,
                      std::chrono::nanoseconds atMost = std::chrono::seconds(20)) {
    bool isOver = false;
    const auto task = loop.asyncAfter(atMost, [&] { isOver = true; });
    loop.runUntil([&] { return isOver || condition(); });
    task->cancel();
    return condition();
}

// Like turnUntil(), for a condition that changes without waking the loop. Checks the condition every 5 ms.
inline bool lookUntil(SdEventLoop& loop, const std::function<bool()>& condition,
                      std::chrono::nanoseconds atMost = std::chrono::seconds(20)) {
    const auto end = std::chrono::steady_clock::now() + atMost;
    while (!condition() && std::chrono::steady_clock::now() < end) {
        turnUntil(loop, condition, std::chrono::milliseconds(5));
    }
    return condition();
}

inline int turnsWithin(SdEventLoop& loop, std::chrono::nanoseconds duration) {
    bool isOver = false;
    int turns = 0;
    loop.asyncAfter(duration, [&] { isOver = true; });
    loop.runUntil([&] {
        ++turns;
        return isOver;
    });
    return turns;
}

}  // namespace kovra
