#pragma once

#include <memory>
#include <utility>

namespace kovra {

// Lets a queued block check whether the object that queued it still exists.
//
// Declare it as the last member: members are destroyed in reverse order, so the lifetime ends before all others.
class Lifetime {
  public:
    // Lets a function check whether code that it called has destroyed the function's own object.
    class Observer {
      public:
        bool hasEnded() const { return token_.expired(); }

      private:
        friend class Lifetime;
        explicit Observer(std::weak_ptr<const void> token) : token_(std::move(token)) {}

        std::weak_ptr<const void> token_;
    };

    Lifetime() = default;
    Lifetime(const Lifetime&) = delete;
    Lifetime& operator=(const Lifetime&) = delete;

    Observer observe() const { return Observer(token_); }

    // Wraps the block so that it does nothing once the lifetime has ended.
    template <typename Block>
    auto guard(Block block) const {
        return [observer = observe(), block = std::move(block)] {
            if (!observer.hasEnded()) block();
        };
    }

  private:
    std::shared_ptr<const void> token_ = std::make_shared<char>();
};

}  // namespace kovra
