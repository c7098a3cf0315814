#include "BLE_kovra/core/MutingDecision.h"

#include <gtest/gtest.h>

namespace kovra {
namespace {

using Mode = AppState::BlockMode;

bool decide(Mode mode, bool isEnabled, bool connected) {
    return decideMuting(mode, isEnabled, [connected] { return connected; });
}

TEST(MutingDecisionTest, FollowsTheTruthTable) {
    EXPECT_FALSE(decide(Mode::always, false, false));
    EXPECT_FALSE(decide(Mode::always, false, true));
    EXPECT_TRUE(decide(Mode::always, true, false));
    EXPECT_TRUE(decide(Mode::always, true, true));
    EXPECT_FALSE(decide(Mode::onDevice, false, false));
    EXPECT_FALSE(decide(Mode::onDevice, false, true));
    EXPECT_FALSE(decide(Mode::onDevice, true, false));
    EXPECT_TRUE(decide(Mode::onDevice, true, true));
}

TEST(MutingDecisionTest, DoesNotCheckDevicesWhileTheSwitchIsOff) {
    int looks = 0;
    const auto look = [&] {
        ++looks;
        return true;
    };
    EXPECT_FALSE(decideMuting(Mode::onDevice, false, look));
    EXPECT_EQ(looks, 0);
    EXPECT_TRUE(decideMuting(Mode::onDevice, true, look));
    EXPECT_EQ(looks, 1);
}

TEST(MutingDecisionTest, DoesNotCheckDevicesInModeAlways) {
    int looks = 0;
    EXPECT_TRUE(decideMuting(Mode::always, true, [&] { return ++looks > 0; }));
    EXPECT_EQ(looks, 0);
}

}  // namespace
}  // namespace kovra
