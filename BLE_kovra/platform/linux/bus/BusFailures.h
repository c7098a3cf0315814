#pragma once

#include <cstddef>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace kovra {

// What a bus did not do for this program, kept for a report. A program that goes on without its tray, its hot key or
// the news of a resume can at least say why.
class BusFailures {
  public:
    static constexpr std::size_t most = 20;  // the newest

    // `error` is an error number, of either sign.
    void add(const std::string& what, int error) { add(what + ": " + std::strerror(error < 0 ? -error : error)); }
    void add(std::string failure) {
        if (failures_.size() == most) failures_.erase(failures_.begin());
        failures_.push_back(std::move(failure));
    }
    // The oldest first.
    const std::vector<std::string>& all() const { return failures_; }

  private:
    std::vector<std::string> failures_;
};

}  // namespace kovra
