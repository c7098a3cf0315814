#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <random>
#include <string>

#include "tests/model/Comparison.h"

namespace kovra::model {

namespace {

constexpr int stepsOfALife = 250;
constexpr int livesOfATest = 240;

void expectAgreement(std::uint64_t firstSeed, int lives, Census& census) {
    std::cout << "seeds " << firstSeed << " to " << firstSeed + static_cast<std::uint64_t>(lives) - 1 << ", "
              << lives * stepsOfALife << " events\n";
    for (int life = 0; life < lives; ++life) {
        const auto difference = compare(firstSeed + static_cast<std::uint64_t>(life), stepsOfALife, census);
        ASSERT_FALSE(difference) << *difference;
    }
}

// Expects each kind of effect at least 100 times, since a run with fewer events would prove little.
void expectThatMuchHappened(const Census& census) {
    for (const auto& [what, times] : census) std::cout << what << ": " << times << "\n";
    for (const char* what :
         {"wrote on", "wrote off", "logged", "saved selectedDeviceIDs", "saved isEnabled", "saved blockMode", "beeped",
          "announced devices", "announced blocking", "mixed list", "grace ended", "back in time"}) {
        EXPECT_TRUE(census.contains(what) && census.at(what) >= 100) << what << " hardly ever happened";
    }
}

}  // namespace

class ModelRandomLifeTest : public testing::TestWithParam<int> {};

TEST_P(ModelRandomLifeTest, AgreesWithTheReferenceModel) {
    Census census;
    expectAgreement(static_cast<std::uint64_t>(GetParam()) * 1'000'000, livesOfATest, census);
    if (!HasFatalFailure()) expectThatMuchHappened(census);
}

INSTANTIATE_TEST_SUITE_P(FixedSeeds, ModelRandomLifeTest, testing::Values(1, 2, 3, 4));

// With KOVRA_MODEL_SEED=N this test plays only the life of that seed. A failure names its seed.
TEST(ModelFreshSeedsTest, AgreeWithTheReferenceModel) {
    Census census;
    if (const char* seed = std::getenv("KOVRA_MODEL_SEED")) {
        expectAgreement(std::strtoull(seed, nullptr, 10), 1, census);
        return;
    }
    expectAgreement(std::uint64_t{std::random_device{}()} << 16U, livesOfATest, census);
    if (!HasFatalFailure()) expectThatMuchHappened(census);
}

}  // namespace kovra::model
