#pragma once

#include <cstdint>
#include <random>
#include <vector>

namespace kovra {

// Returns seeds for generated tests: fixed ones, which are the same in every run, and one random seed. A test names its
// seed in SCOPED_TRACE, so that a failure can be reproduced.
inline std::vector<std::uint32_t> fixedAndFreshSeeds(std::uint32_t fixedCount) {
    std::vector<std::uint32_t> seeds;
    for (std::uint32_t seed = 1; seed <= fixedCount; ++seed) seeds.push_back(seed);
    seeds.push_back(std::random_device{}());
    return seeds;
}

}  // namespace kovra
