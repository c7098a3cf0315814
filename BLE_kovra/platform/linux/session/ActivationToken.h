#pragma once

#include <string>
#include <utility>

namespace kovra {

// The right to bring a window to the front, which the desktop gives with a click. It is good for the next window, once.
class ActivationToken {
  public:
    // The newest replaces what was there. One longer than any desktop's counts as none.
    void provide(std::string token) { token_ = token.size() <= longest ? std::move(token) : std::string(); }
    // Empty where there is none.
    std::string take() { return std::exchange(token_, {}); }

  private:
    static constexpr std::size_t longest = 1024;

    std::string token_;
};

}  // namespace kovra
