#pragma once

#include <chrono>
#include <string>
#include <utility>

namespace kovra::helper {

// Counts in a file how many starts of the daemon in a row were not followed by clear(). The daemon calls clear() when
// it has run for ten seconds, and when it ends without a crash. So the count is that of crashes soon after a start.
// systemd alone would restart such a daemon every second: it supports growing delays only since version 254.
class EarlyEnds {
  public:
    explicit EarlyEnds(std::string file) : file_(std::move(file)) {}

    // Adds one to the count. Returns how long the daemon must wait before it mutes anything: 0 s if the count was at
    // most 2, 4 s if it was 3, 8 s if it was 4 and so on, up to 64 s. A file that cannot be read or starts with no
    // digit counts as 0. A failure to write the file is ignored.
    std::chrono::seconds begin() const;
    void clear() const;

  private:
    const std::string file_;
};

}  // namespace kovra::helper
