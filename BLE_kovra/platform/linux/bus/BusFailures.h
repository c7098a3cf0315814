#pragma once

#include <cstddef>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace kovra {

// The failures on a bus, recorded for diagnosis. The program continues without the feature that failed, such as its
// tray or its hot key.
class BusFailures {
  public:
    static constexpr std::size_t most = 20;  // the largest number kept; then the oldest are dropped

    // `error` is an error number, positive or negative.
    void add(const std::string& what, int error) { add(what + ": " + std::strerror(error < 0 ? -error : error)); }
    void add(std::string failure) {
        if (failures_.size() == most) failures_.erase(failures_.begin());
        failures_.push_back(std::move(failure));
    }
    // Returns the failures, oldest first.
    const std::vector<std::string>& all() const { return failures_; }

  private:
    std::vector<std::string> failures_;
};

}  // namespace kovra
