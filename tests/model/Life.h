#pragma once

#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "tests/model/Action.h"

namespace kovra::model {

// A random life: the initial state and the actions. It depends only on the seed.
//
// There are few device models, so that keys collide. Times are often at or near the grace period. Nothing here depends
// on the program or the model.
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
    std::string unknown_;                       // the text for a missing name
    std::vector<DeviceDescription> favorites_;  // models that occur more often in this life
    // The members from here to lastRemoved_ estimate which interfaces are attached when an action is performed. An
    // action of a subscriber counts once, when it is generated, although it may be performed several times or never.
    std::uint64_t interfaces_ = 0;            // how many have been attached
    std::vector<DeviceDescription> devices_;  // the device of each interface, by number
    std::vector<std::uint64_t> attached_;     // the interfaces that are attached now
    std::optional<DeviceDescription> lastRemoved_;
    std::uint64_t subscribers_ = 0;  // how many subscriptions have been generated
};

}  // namespace kovra::model
