#pragma once

#include <optional>
#include <string>
#include <utility>

namespace kovra {

// The result of an operation: success, or the system's error message in the user's language.
class [[nodiscard]] Outcome {
  public:
    static Outcome success() { return Outcome(std::nullopt); }
    static Outcome failure(std::string reason) { return Outcome(std::move(reason)); }

    explicit operator bool() const { return !reason_; }
    // The error message. Empty after a success.
    std::string reason() const { return reason_.value_or(std::string()); }

  private:
    explicit Outcome(std::optional<std::string> reason) : reason_(std::move(reason)) {}

    std::optional<std::string> reason_;
};

}  // namespace kovra
