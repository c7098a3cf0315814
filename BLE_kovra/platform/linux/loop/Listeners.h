#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace kovra {

// Functions that are called in the order in which they were added, each for as long as its token lives.
//
// Listeners may be added and removed during a call. A removed listener is not called any more; a new one is called from
// the next call on.
template <typename... Values>
class Listeners {
  public:
    using Listener = std::function<void(Values...)>;
    using Token = std::shared_ptr<const void>;

    [[nodiscard]] Token add(Listener listener) {
        std::erase_if(listeners_, [](const auto& each) { return each.expired(); });
        auto held = std::make_shared<const Listener>(std::move(listener));
        listeners_.emplace_back(held);
        return held;
    }
    void call(Values... values) const {
        for (const auto& each : std::vector(listeners_)) {
            if (const auto listener = each.lock()) (*listener)(values...);
        }
    }

  private:
    std::vector<std::weak_ptr<const Listener>> listeners_;
};

}  // namespace kovra
