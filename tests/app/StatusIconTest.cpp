#include "BLE_kovra/app/StatusIcon.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "BLE_kovra/platform/ApplicationIcon.h"
#include "tests/support/Dump.h"

namespace kovra {
namespace {

TEST(StatusIconTest, IsATrackpadWithTheLineBetweenItsButtons) {
    EXPECT_EQ(dump(makeIcon(false)), R"(ble-kovra-symbolic 18x18
rounded rectangle at 2.5,4 of 13x10 radii 2,2 width 1.2
segment 9,4 to 9,9 width 1
)");
}

TEST(StatusIconTest, HasASlashOnTopWhileMuted) {
    EXPECT_EQ(dump(makeIcon(true)), R"(ble-kovra-muted-symbolic 18x18
rounded rectangle at 2.5,4 of 13x10 radii 2,2 width 1.2
segment 9,4 to 9,9 width 1
segment 3,3 to 15,15 width 1.6
)");
}

TEST(StatusIconTest, MatchesTheApplicationIcon) {
    const auto layers = applicationIcon().layers;
    for (const Stroke& stroke : makeIcon(true).strokes) {
        EXPECT_TRUE(std::any_of(layers.begin(), layers.end(), [&](const auto& layer) {
            return layer.shape == stroke.shape && (layer.lineWidth == 0 || layer.lineWidth >= stroke.lineWidth);
        }));
    }
    EXPECT_EQ(applicationIcon().size, makeIcon(true).size);
}

}  // namespace
}  // namespace kovra
