#include "helper/pads/Unmute.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>
#include <vector>

#include "tests/helper/pads/MuterRig.h"

namespace kovra::helper {
namespace {

using namespace std::chrono_literals;

class UnmuteTest : public MuterRig {};

TEST_F(UnmuteTest, UnmutesAllListedDevices) {
    muter.muteOnly({"input5", "input6"});
    MutedPads found(runtime);
    EXPECT_TRUE(unmuteAll(found, attribute, 0ms));
    EXPECT_TRUE(computer.isActive("input5"));
    EXPECT_TRUE(computer.isActive("input6"));
    EXPECT_EQ(recordedPads(), Names());
}

TEST_F(UnmuteTest, LeavesDevicesAloneThatAreNotListed) {
    computer.plug("input5", "1\n");
    EXPECT_TRUE(unmuteAll(mutedPads, attribute, 0ms));
    EXPECT_TRUE(computer.isInhibited("input5"));
}

TEST_F(UnmuteTest, GivesUpAfterTheTimeoutAndKeepsTheDeviceListed) {
    muter.muteOnly({"input5", "input6"});
    computer.refuseWrites("input5");
    EXPECT_FALSE(unmuteAll(mutedPads, attribute, 60ms));
    EXPECT_TRUE(computer.isActive("input6"));
    EXPECT_EQ(recordedPads(), Names{"input5"});
}

TEST_F(UnmuteTest, NeedsNoWriteForADeviceThatIsNotInhibited) {
    muter.muteOnly({"input5"});
    computer.activateAndSeal("input5");
    EXPECT_NE(attribute.setInhibited("input5", false), 0);
    EXPECT_TRUE(unmuteAll(mutedPads, attribute, 0ms));
    EXPECT_EQ(recordedPads(), Names());
}

TEST_F(UnmuteTest, KeepsTheDeviceListedIfAllDevicesAreMissing) {
    muter.muteOnly({"input5"});
    EXPECT_FALSE(unmuteAll(mutedPads, InhibitedAttribute(folder / "no/sys/class/input"), 0ms));
    EXPECT_EQ(recordedPads(), Names{"input5"});
    EXPECT_TRUE(unmuteAll(mutedPads, attribute, 0ms));
    EXPECT_TRUE(computer.isActive("input5"));
}

TEST_F(UnmuteTest, RetriesUntilTheTimeout) {
    muter.muteOnly({"input5"});
    computer.refuseWrites("input5");
    std::thread driver([&] {
        std::this_thread::sleep_for(30ms);
        computer.acceptWrites("input5");
    });
    EXPECT_TRUE(unmuteAll(mutedPads, attribute, 20s));
    driver.join();
    EXPECT_TRUE(computer.isActive("input5"));
}

}  // namespace
}  // namespace kovra::helper
