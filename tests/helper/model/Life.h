#pragma once

#include <cstdint>
#include <random>
#include <vector>

#include "tests/helper/model/Action.h"

namespace kovra::helper::model {

// Returns the random actions of this seed. In most of them the person at the machine runs the application and writes
// the flag, as people do. Faults end after a while. Times are often near those that the helper knows.
std::vector<Action> lifeOf(std::uint64_t seed, int count);

}  // namespace kovra::helper::model
