#pragma once

#include <cstdint>
#include <random>
#include <vector>

namespace kovra {

// Seeds for generated tests: fixed ones, which repeat earlier findings, and a fresh one for each run. A test names its
// seed in SCOPED_TRACE, so that a failure can be repeated.
inline std::vector<std::uint32_t> fixedAndFreshSeeds(std::uint32_t fixedCount) {
    std::vector<std::uint32_t> seeds;
    for (std::uint32_t seed = 1; seed <= fixedCount; ++seed) seeds.push_back(seed);
    seeds.push_back(std::random_device{}());
    return seeds;
}

}  // namespace kovra
