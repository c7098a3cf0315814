#pragma once

#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "tests/model/Action.h"

namespace kovra::model {

// A random life: the same seed gives the same one everywhere.
//
// There are few models of device, so that keys meet; times lie at and around the grace period more often than chance
// would have it; nothing here looks at the program or at the model.
class Life {
  public:
    explicit Life(std::uint64_t seed) : random_(seed) {}

    Beginning beginning();
    std::vector<Action> actions(int count);

  private:
    std::uint64_t below(std::uint64_t limit) { return random_() % limit; }
    bool oneIn(std::uint64_t times) { return below(times) == 0; }
    template <typename List>
    auto oneOf(const List& list) {
        return *(list.begin() + static_cast<std::ptrdiff_t>(below(list.size())));
    }

    Action next();
    Action fromOutside(Action::Kind kind);
    Action choice();
    Action subscription(int depth);
    Action reaction(int depth);
    Action relaunch();
    DeviceDescription model();
    DeviceDescription device();
    std::string key();
    std::set<std::string> keys();

    std::mt19937_64 random_;
    std::string unknown_;                        // what stands for a missing name
    std::vector<DeviceDescription> favourites_;  // models that come more often in this life
    // As far as this side knows: those that reactions attach are not counted here.
    std::uint64_t interfaces_ = 0;            // attached so far
    std::vector<DeviceDescription> devices_;  // whose they are, by number
    std::vector<std::uint64_t> attached_;     // still
    std::optional<DeviceDescription> lastGone_;
    std::uint64_t subscribers_ = 0;  // made so far
};

}  // namespace kovra::model
