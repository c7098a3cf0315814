#pragma once

#include <chrono>
#include <filesystem>
#include <utility>

namespace kovra::helper {

// Counts in a file how often in a row the daemon has ended soon after its start without having cleared the count: a
// daemon that crashes each time it starts. systemd restarts it one second after each end, without a limit, and knows no
// growing delays before version 254.
class EarlyEnds {
  public:
    explicit EarlyEnds(std::filesystem::path file) : file_(std::move(file)) {}

    // Counts the present start as an early end, until clear() is called. Returns how long the daemon is to wait before
    // it does anything: nothing after the first two early ends in a row, then 4 s, 8 s and so on, up to 64 s. A file
    // that cannot be read or written counts as no early end.
    std::chrono::seconds begin() const;
    void clear() const;

  private:
    const std::filesystem::path file_;
};

}  // namespace kovra::helper
