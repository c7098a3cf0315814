#include "BLE_kovra/app/StatusIcon.h"

#include <gtest/gtest.h>

#include "tests/support/Dump.h"

namespace kovra {
namespace {

TEST(StatusIcon, IsATrackpadWithTheLineBetweenItsButtons) {
    EXPECT_EQ(dump(makeIcon(false)), R"(ble-kovra-symbolic 18x18
rounded rectangle at 2.5,4 of 13x10 radii 2,2 width 1.2
segment 9,4 to 9,9 width 1
)");
}

TEST(StatusIcon, HasASlashOnTopWhileMuted) {
    EXPECT_EQ(dump(makeIcon(true)), R"(ble-kovra-muted-symbolic 18x18
rounded rectangle at 2.5,4 of 13x10 radii 2,2 width 1.2
segment 9,4 to 9,9 width 1
segment 3,3 to 15,15 width 1.6
)");
}

TEST(StatusIcon, IsTheSameAtEveryCall) {
    EXPECT_EQ(makeIcon(true), makeIcon(true));
    EXPECT_NE(makeIcon(true), makeIcon(false));
}

}  // namespace
}  // namespace kovra
