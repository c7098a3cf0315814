#pragma once

#include <chrono>
#include <functional>
#include <thread>

namespace kovra::helper {

// Waits until the condition holds or the timeout expires. Returns whether the condition held in time.
inline bool waitUntil(const std::function<bool()>& done, std::chrono::milliseconds timeout = std::chrono::seconds(20)) {
    const auto end = std::chrono::steady_clock::now() + timeout;
    while (!done()) {
        if (std::chrono::steady_clock::now() >= end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

}  // namespace kovra::helper
