#include "helper/pads/Muter.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>

#include "tests/helper/RunUntil.h"
#include "tests/helper/pads/MuterRig.h"

namespace kovra::helper {
namespace {

using namespace std::chrono_literals;

class MuterTest : public MuterRig {};

TEST_F(MuterTest, MutesWhatItIsToldToAndNothingElse) {
    muter.muteOnly({"input5"});
    EXPECT_TRUE(computer.isInhibited("input5"));
    EXPECT_TRUE(computer.isActive("input6"));
    EXPECT_EQ(recordedPads(), Names{"input5"});
}

TEST_F(MuterTest, GivesBackWhatIsNoLongerToBeMuted) {
    muter.muteOnly({"input5", "input6"});
    muter.muteOnly({"input6"});
    EXPECT_TRUE(computer.isActive("input5"));
    EXPECT_TRUE(computer.isInhibited("input6"));
    EXPECT_EQ(recordedPads(), Names{"input6"});
    muter.muteOnly({});
    EXPECT_TRUE(computer.isActive("input6"));
    EXPECT_EQ(recordedPads(), Names());
}

TEST_F(MuterTest, GivesBackWhatAProcessBeforeItHasLeft) {
    computer.plug("input5", "1\n");
    ASSERT_EQ(MutedPads(runtime).add("input5"), 0);
    MutedPads found(runtime);
    Muter(loop, found, inputs).muteOnly({});
    EXPECT_TRUE(computer.isActive("input5"));
    EXPECT_EQ(recordedPads(), Names());
}

TEST_F(MuterTest, LeavesAloneWhatSomebodyElseHasInhibited) {
    computer.plug("input5", "1\n");
    muter.muteOnly({"input5", "input6"});
    EXPECT_EQ(recordedPads(), Names{"input6"});
    muter.muteOnly({});
    EXPECT_TRUE(computer.isInhibited("input5"));
    EXPECT_TRUE(computer.isActive("input6"));
}

TEST_F(MuterTest, DoesNotMuteWhatItCannotRecord) {
    writeFile(runtime, "a file in the way");
    muter.muteOnly({"input5"});
    EXPECT_TRUE(computer.isActive("input5"));
}

TEST_F(MuterTest, SaysOnceThatItCannotRecord) {
    writeFile(runtime, "a file in the way");
    computer.plug("input15");
    computer.plug("input16");
    testing::internal::CaptureStderr();
    for (int i = 0; i < 3; ++i) muter.muteOnly({"input15", "input16"});
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "<4>input15 is not muted, since it cannot be recorded: Not a directory\n"
              "<4>input16 is not muted, since it cannot be recorded: Not a directory\n");
}

TEST_F(MuterTest, GivesBackAlsoWhenItsRecordsWereTakenAway) {
    muter.muteOnly({"input5"});
    std::filesystem::remove_all(runtime);
    muter.muteOnly({});
    EXPECT_TRUE(computer.isActive("input5"));
}

TEST_F(MuterTest, ForgetsWhatIsGone) {
    muter.muteOnly({"input5"});
    computer.unplug("input5");
    muter.muteOnly({});
    EXPECT_EQ(recordedPads(), Names());
}

TEST_F(MuterTest, MutesADeviceThatCameBackUnderAnotherNumber) {
    muter.muteOnly({"input5"});
    computer.unplug("input5");
    computer.plug("input7");
    muter.muteOnly({"input7"});
    EXPECT_TRUE(computer.isInhibited("input7"));
    EXPECT_EQ(recordedPads(), Names{"input7"});
}

TEST_F(MuterTest, SurvivesThatADeviceIsGoneBeforeItIsMuted) {
    computer.unplug("input5");
    muter.muteOnly({"input5", "input6"});
    EXPECT_TRUE(computer.isInhibited("input6"));
    EXPECT_EQ(recordedPads(), Names{"input6"});
}

TEST_F(MuterTest, MutesAgainWhatSomebodyElseHasGivenBack) {
    muter.muteOnly({"input5"});
    computer.plug("input5", "0\n");
    std::filesystem::remove_all(runtime);
    muter.muteOnly({"input5"});
    EXPECT_TRUE(computer.isInhibited("input5"));
    EXPECT_EQ(recordedPads(), Names{"input5"});
}

TEST_F(MuterTest, TakesBackTheRecordOfADeviceThatRefusesToBeMuted) {
    computer.activateAndSeal("input5");
    muter.muteOnly({"input5", "input6"});
    EXPECT_TRUE(computer.isInhibited("input6"));
    EXPECT_TRUE(computer.isActive("input5"));
    EXPECT_EQ(recordedPads(), Names{"input6"});
}

TEST_F(MuterTest, LeavesAloneADeviceThatDoesNotSayWhetherItIsInhibited) {
    computer.refuseWrites("input5");
    muter.muteOnly({"input5", "input6"});
    EXPECT_TRUE(computer.isInhibited("input6"));
    EXPECT_EQ(recordedPads(), Names{"input6"});
}

TEST_F(MuterTest, TriesAgainToGiveBackWhatADriverRefuses) {
    muter.muteOnly({"input5", "input6"});
    computer.refuseWrites("input5");
    muter.muteOnly({});
    EXPECT_TRUE(computer.isActive("input6"));
    EXPECT_EQ(recordedPads(), Names{"input5"});
    runFor(loop, 200ms);
    EXPECT_EQ(recordedPads(), Names{"input5"});
    computer.acceptWrites("input5");
    EXPECT_TRUE(runUntil(loop, [&] { return computer.isActive("input5"); }));
    EXPECT_EQ(recordedPads(), Names());
}

TEST_F(MuterTest, StopsTryingWhenTheDeviceIsToBeMutedAgain) {
    muter.muteOnly({"input5"});
    computer.refuseWrites("input5");
    muter.muteOnly({});
    computer.acceptWrites("input5");
    muter.muteOnly({"input5"});
    runFor(loop, 200ms);
    EXPECT_TRUE(computer.isInhibited("input5"));
    EXPECT_EQ(recordedPads(), Names{"input5"});
}

TEST_F(MuterTest, StopsTryingWhenTheDeviceIsGone) {
    muter.muteOnly({"input5"});
    computer.refuseWrites("input5");
    muter.muteOnly({});
    computer.unplug("input5");
    EXPECT_TRUE(runUntil(loop, [&] { return recordedPads().empty(); }));
}

}  // namespace
}  // namespace kovra::helper
