#pragma once

#include <string>
#include <utility>

namespace kovra {

// The right to bring a window to the front, which the desktop grants on a click. It can be used once, for the next
// window.
class ActivationToken {
  public:
    // Replaces the previous token. A token of more than `longest` bytes, which no desktop issues, counts as empty.
    void provide(std::string token) { token_ = token.size() <= longest ? std::move(token) : std::string(); }
    // Returns the token and removes it. Returns an empty text if there is none.
    std::string take() { return std::exchange(token_, {}); }

  private:
    static constexpr std::size_t longest = 1024;

    std::string token_;
};

}  // namespace kovra
