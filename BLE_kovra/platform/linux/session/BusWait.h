#pragma once

#include <systemd/sd-bus.h>

#include <chrono>
#include <cstdint>

namespace kovra {

// Processes the messages of a bus until the condition is true, the time `atMost` is over, or the bus disconnects. Does
// not run the event loop. So it is used only at the start of the program, when nothing else uses the loop yet.
template <typename Condition>
void processUntil(sd_bus* bus, std::chrono::steady_clock::duration atMost, Condition holds) {
    using std::chrono::steady_clock;
    const auto deadline = steady_clock::now() + atMost;
    while (!holds() && steady_clock::now() < deadline) {
        const int processed = sd_bus_process(bus, nullptr);
        if (processed < 0) return;
        if (processed > 0) continue;
        const auto left = std::chrono::ceil<std::chrono::microseconds>(deadline - steady_clock::now()).count();
        static_cast<void>(sd_bus_wait(bus, left > 0 ? static_cast<std::uint64_t>(left) : 0));
    }
}

}  // namespace kovra
