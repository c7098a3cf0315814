#include "BLE_kovra/platform/linux/ui/elements/Sharing.h"

#include <gtest/gtest.h>

namespace kovra {
namespace {

using Sizes = std::vector<int>;

TEST(SharingTest, GivesEachItsPreferredSize) {
    EXPECT_EQ(share(100, {{5, 20}, {5, 30}}), (Sizes{20, 30}));
    EXPECT_EQ(share(100, {}), Sizes());
}

TEST(SharingTest, SplitsTheRemainderEquallyAmongThoseThatExpand) {
    EXPECT_EQ(share(100, {{0, 0, true}, {5, 20}, {0, 10, true}}), (Sizes{35, 20, 45}));
    EXPECT_EQ(share(21, {{0, 0, true}, {0, 0, true}, {0, 0, true}}), (Sizes{7, 7, 7}));
    EXPECT_EQ(share(20, {{0, 0, true}, {0, 0, true}, {0, 0, true}}), (Sizes{6, 7, 7}));
}

TEST(SharingTest, ShrinksTheLongestFirst) {
    EXPECT_EQ(share(100, {{5, 20}, {5, 200}}), (Sizes{20, 80}));
    EXPECT_EQ(share(100, {{5, 90}, {5, 200}}), (Sizes{50, 50}));
    EXPECT_EQ(share(101, {{5, 90}, {5, 200}, {0, 10}}), (Sizes{46, 45, 10}));
}

TEST(SharingTest, ShrinksNoneBelowItsMinimum) {
    EXPECT_EQ(share(100, {{95, 95}, {5, 20}}), (Sizes{95, 5}));
    EXPECT_EQ(share(50, {{95, 95}, {5, 20}}), (Sizes{95, 5}));
    EXPECT_EQ(share(-5, {{3, 8, true}}), (Sizes{3}));
}

}  // namespace
}  // namespace kovra
