#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <random>
#include <string>

#include "tests/helper/model/Comparison.h"

namespace kovra::helper::model {

namespace {

constexpr int stepsOfALife = 250;
constexpr int livesOfATest = 80;

void expectAgreement(std::uint64_t firstSeed, int lives, Census& census) {
    std::cout << "seeds " << firstSeed << " to " << firstSeed + static_cast<std::uint64_t>(lives) - 1 << ", "
              << lives * stepsOfALife << " events\n";
    for (int life = 0; life < lives; ++life) {
        const auto difference = compare(firstSeed + static_cast<std::uint64_t>(life), stepsOfALife, census);
        ASSERT_FALSE(difference) << *difference;
    }
}

// A run in which little happened would prove little.
void expectThatMuchHappened(const Census& census) {
    for (const auto& [what, times] : census) std::cout << what << ": " << times << "\n";
    for (const char* what : {"muted", "unmuted", "hand-overs", "wrote on", "wrote another word", "killed at a call",
                             "interrupted at a call", "applications killed", "daemons", "releases"}) {
        EXPECT_TRUE(census.contains(what) && census.at(what) >= 100) << what << " hardly ever happened";
    }
    for (const char* what : {"wrote through a kept descriptor", "troubles that ended", "refusals that ended"}) {
        EXPECT_TRUE(census.contains(what) && census.at(what) >= 20) << what << " hardly ever happened";
    }
}

}  // namespace

class HelperModelRandomLifeTest : public testing::TestWithParam<int> {};

TEST_P(HelperModelRandomLifeTest, AgreesWithTheReferenceModel) {
    Census census;
    expectAgreement(static_cast<std::uint64_t>(GetParam()) * 1'000'000, livesOfATest, census);
    if (!HasFatalFailure()) expectThatMuchHappened(census);
}

INSTANTIATE_TEST_SUITE_P(FixedSeeds, HelperModelRandomLifeTest, testing::Values(1, 2, 3, 4));

// With KOVRA_MODEL_SEED=N this test plays only the life of that seed. A failure names its seed.
TEST(HelperModelFreshSeedsTest, AgreeWithTheReferenceModel) {
    Census census;
    if (const char* seed = std::getenv("KOVRA_MODEL_SEED")) {
        expectAgreement(std::strtoull(seed, nullptr, 10), 1, census);
        return;
    }
    expectAgreement(std::uint64_t{std::random_device{}()} << 16U, livesOfATest, census);
    if (!HasFatalFailure()) expectThatMuchHappened(census);
}

}  // namespace kovra::helper::model
