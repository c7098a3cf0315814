#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <utility>

namespace kovra {

// The right to bring a window to the front, which the desktop grants on a click. It can be used once, for the next
// window.
class ActivationToken {
  public:
    static constexpr std::size_t longest = 1024;

    // Replaces the previous token. A token of more than `longest` bytes, which no desktop issues, counts as empty.
    void provide(std::string token) { token_ = token.size() <= longest ? std::move(token) : std::string(); }
    // Provides the token of a click on the icon or its menu.
    void provideForClick(const std::string& token) {
        provide(token);
        if (onClick && token.size() <= longest) onClick(token);
    }
    // Called with the token of each click. The desktop shows launch feedback for it, although a click may open nothing.
    std::function<void(const std::string& token)> onClick;

    // Returns the token and removes it. Returns an empty text if there is none.
    std::string take() {
        used_ = std::exchange(token_, {});
        return used_;
    }
    // Returns whether this token is the last one that was taken for a window.
    bool isUsed(const std::string& token) const { return used_ == token; }
    // Removes this token if it is still there. Call this function when the desktop no longer accepts it.
    void forget(const std::string& token) {
        if (token_ == token) token_.clear();
    }

  private:
    std::string token_;
    std::string used_;
};

}  // namespace kovra
