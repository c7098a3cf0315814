#pragma once

#include <memory>
#include <utility>

namespace kovra {

// Ends with the object that it is a member of, so that a block which runs later never reaches an object that was
// destroyed meanwhile. Declare it last: members are destroyed in reverse order, and it then ends first.
class Lifetime {
  public:
    // For a function that calls code which may destroy its object.
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

    // The same block, which does nothing once the lifetime has ended.
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
