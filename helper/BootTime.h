#pragma once

#include <chrono>

namespace kovra::helper {

// A time since boot, including sleep (CLOCK_BOOTTIME). It does not change when the real-time clock is set.
using BootTime = std::chrono::nanoseconds;

}  // namespace kovra::helper
