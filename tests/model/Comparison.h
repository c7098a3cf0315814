#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace kovra::model {

// Counters, so that a comparison can show that it compared something.
using Census = std::map<std::string, int>;

// Plays the life of this seed on the program and on the model and compares them after each action: all effects and
// their order, the state, and the length of the queue. Returns nothing if they agree; otherwise the seed, the step, and
// the shortest failing life found.
std::optional<std::string> compare(std::uint64_t seed, int steps, Census& census);

}  // namespace kovra::model
