#pragma once

#include <poll.h>

#include <chrono>

namespace kovra {

// The end of the time for which a program that is ending waits for its desktop. It starts when this object is made.
class Deadline {
  public:
    static constexpr std::chrono::milliseconds longest{1000};

    // Waits until the descriptor is readable. Returns false if it is not by the deadline, or if a signal arrives.
    bool waitFor(int descriptor) const {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(end_ - std::chrono::steady_clock::now());
        pollfd readable{descriptor, POLLIN, 0};
        return left.count() > 0 && ::poll(&readable, 1, static_cast<int>(left.count())) > 0;
    }

  private:
    const std::chrono::steady_clock::time_point end_ = std::chrono::steady_clock::now() + longest;
};

}  // namespace kovra
