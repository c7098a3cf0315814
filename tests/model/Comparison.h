#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace kovra::model {

// How often what was seen, so that a comparison can show that it compared something.
using Census = std::map<std::string, int>;

// Plays the life of this seed to the program and to the model side by side and compares them after each action: every
// effect and its order, the state, and how much is queued. Returns nothing if they agree; otherwise the seed, the step,
// and the shortest life found that still shows the difference.
std::optional<std::string> compare(std::uint64_t seed, int steps, Census& census);

}  // namespace kovra::model
