#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace kovra::helper::model {

// How often something happened. It shows how much was compared.
using Census = std::map<std::string, int>;

// Plays the life of this seed, and compares the helper's effects with the reference model whenever the helper waits.
// Returns nothing if they agree; otherwise a report with the seed, the step, and the shortest failing life found.
std::optional<std::string> compare(std::uint64_t seed, int steps, Census& census);

}  // namespace kovra::helper::model
