#pragma once

#include <chrono>
#include <filesystem>
#include <utility>

namespace kovra::helper {

// A count, kept in a file, of how often in a row the daemon has ended soon after its start without a call of clear(). A
// daemon that crashes each time it starts is recognized by this count. systemd restarts the daemon one second after
// each end, without a limit, and knows no growing delays before version 254.
class EarlyEnds {
  public:
    explicit EarlyEnds(std::filesystem::path file) : file_(std::move(file)) {}

    // Counts the present start as an early end, until clear() is called. Returns how long the daemon is to wait before
    // it mutes anything: nothing after the first two early ends in a row, then 4 s, 8 s and so on, up to 64 s. A file
    // that cannot be read or contains no number counts as no early end. A failure to write the file is ignored.
    std::chrono::seconds begin() const;
    void clear() const;

  private:
    const std::filesystem::path file_;
};

}  // namespace kovra::helper
