#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace kovra::model {

// Counts of effects and other events by kind. They show how much was compared.
using Census = std::map<std::string, int>;

// Plays the life of this seed on the program and on the model. After each action it compares all effects in order, the
// state, and the length of the queue. Returns nothing if they agree; otherwise a report with the seed, the step, and
// the shortest failing life found.
std::optional<std::string> compare(std::uint64_t seed, int steps, Census& census);

}  // namespace kovra::model
