#pragma once

#include <algorithm>
#include <chrono>
#include <utility>

namespace kovra::helper {

// Growing delays between the retries of a failed operation. Each delay is twice the previous one, but no longer than
// `longest`. After reset() the next delay is `first` again.
class Backoff {
  public:
    explicit Backoff(std::chrono::milliseconds first = std::chrono::milliseconds(50),
                     std::chrono::milliseconds longest = std::chrono::seconds(5))
        : first_(first), longest_(longest) {}

    std::chrono::milliseconds nextDelay() { return std::exchange(next_, std::min(2 * next_, longest_)); }
    void reset() { next_ = first_; }

  private:
    std::chrono::milliseconds first_;
    std::chrono::milliseconds longest_;
    std::chrono::milliseconds next_ = first_;
};

}  // namespace kovra::helper
