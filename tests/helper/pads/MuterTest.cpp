#include "helper/pads/Muter.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>

#include "tests/helper/Turning.h"
#include "tests/helper/pads/MuterRig.h"

namespace kovra::helper {
namespace {

using namespace std::chrono_literals;

class MuterTest : public MuterRig {};

TEST_F(MuterTest, MutesWhatItIsToldToAndNothingElse) {
    muter.muteExactly({"input5"});
    EXPECT_TRUE(computer.isInhibited("input5"));
    EXPECT_TRUE(computer.isFree("input6"));
    EXPECT_EQ(recorded(), Names{"input5"});
}

TEST_F(MuterTest, GivesBackWhatIsNoLongerToBeMuted) {
    muter.muteExactly({"input5", "input6"});
    muter.muteExactly({"input6"});
    EXPECT_TRUE(computer.isFree("input5"));
    EXPECT_TRUE(computer.isInhibited("input6"));
    EXPECT_EQ(recorded(), Names{"input6"});
    muter.muteExactly({});
    EXPECT_TRUE(computer.isFree("input6"));
    EXPECT_EQ(recorded(), Names());
}

TEST_F(MuterTest, GivesBackWhatAProcessBeforeItHasLeft) {
    computer.plug("input5", "1\n");
    ASSERT_EQ(Records(runtime).add("input5"), 0);
    Records found(runtime);
    Muter(loop, found, inputs).muteExactly({});
    EXPECT_TRUE(computer.isFree("input5"));
    EXPECT_EQ(recorded(), Names());
}

TEST_F(MuterTest, LeavesAloneWhatSomebodyElseHasInhibited) {
    computer.plug("input5", "1\n");
    muter.muteExactly({"input5", "input6"});
    EXPECT_EQ(recorded(), Names{"input6"});
    muter.muteExactly({});
    EXPECT_TRUE(computer.isInhibited("input5"));
    EXPECT_TRUE(computer.isFree("input6"));
}

TEST_F(MuterTest, DoesNotMuteWhatItCannotRecord) {
    writeFile(runtime, "a file in the way");
    muter.muteExactly({"input5"});
    EXPECT_TRUE(computer.isFree("input5"));
}

TEST_F(MuterTest, SaysOnceThatItCannotRecord) {
    writeFile(runtime, "a file in the way");
    computer.plug("input15");
    computer.plug("input16");
    testing::internal::CaptureStderr();
    for (int i = 0; i < 3; ++i) muter.muteExactly({"input15", "input16"});
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "<4>input15 is not muted, since it cannot be recorded: Not a directory\n"
              "<4>input16 is not muted, since it cannot be recorded: Not a directory\n");
}

TEST_F(MuterTest, GivesBackAlsoWhenItsRecordsWereTakenAway) {
    muter.muteExactly({"input5"});
    std::filesystem::remove_all(runtime);
    muter.muteExactly({});
    EXPECT_TRUE(computer.isFree("input5"));
}

TEST_F(MuterTest, ForgetsWhatIsGone) {
    muter.muteExactly({"input5"});
    computer.unplug("input5");
    muter.muteExactly({});
    EXPECT_EQ(recorded(), Names());
}

TEST_F(MuterTest, MutesADeviceThatCameBackUnderAnotherNumber) {
    muter.muteExactly({"input5"});
    computer.unplug("input5");
    computer.plug("input7");
    muter.muteExactly({"input7"});
    EXPECT_TRUE(computer.isInhibited("input7"));
    EXPECT_EQ(recorded(), Names{"input7"});
}

TEST_F(MuterTest, SurvivesThatADeviceIsGoneBeforeItIsMuted) {
    computer.unplug("input5");
    muter.muteExactly({"input5", "input6"});
    EXPECT_TRUE(computer.isInhibited("input6"));
    EXPECT_EQ(recorded(), Names{"input6"});
}

TEST_F(MuterTest, MutesAgainWhatSomebodyElseHasGivenBack) {
    muter.muteExactly({"input5"});
    computer.plug("input5", "0\n");
    std::filesystem::remove_all(runtime);
    muter.muteExactly({"input5"});
    EXPECT_TRUE(computer.isInhibited("input5"));
    EXPECT_EQ(recorded(), Names{"input5"});
}

TEST_F(MuterTest, TakesBackTheRecordOfADeviceThatRefusesToBeMuted) {
    computer.freeAndSeal("input5");
    muter.muteExactly({"input5", "input6"});
    EXPECT_TRUE(computer.isInhibited("input6"));
    EXPECT_TRUE(computer.isFree("input5"));
    EXPECT_EQ(recorded(), Names{"input6"});
}

TEST_F(MuterTest, LeavesAloneADeviceThatDoesNotSayWhetherItIsInhibited) {
    computer.refuse("input5");
    muter.muteExactly({"input5", "input6"});
    EXPECT_TRUE(computer.isInhibited("input6"));
    EXPECT_EQ(recorded(), Names{"input6"});
}

TEST_F(MuterTest, TriesAgainToGiveBackWhatADriverRefuses) {
    muter.muteExactly({"input5", "input6"});
    computer.refuse("input5");
    muter.muteExactly({});
    EXPECT_TRUE(computer.isFree("input6"));
    EXPECT_EQ(recorded(), Names{"input5"});
    turnFor(loop, 200ms);
    EXPECT_EQ(recorded(), Names{"input5"});
    computer.relent("input5");
    EXPECT_TRUE(turnUntil(loop, [&] { return computer.isFree("input5"); }));
    EXPECT_EQ(recorded(), Names());
}

TEST_F(MuterTest, StopsTryingWhenTheDeviceIsToBeMutedAgain) {
    muter.muteExactly({"input5"});
    computer.refuse("input5");
    muter.muteExactly({});
    computer.relent("input5");
    muter.muteExactly({"input5"});
    turnFor(loop, 200ms);
    EXPECT_TRUE(computer.isInhibited("input5"));
    EXPECT_EQ(recorded(), Names{"input5"});
}

TEST_F(MuterTest, StopsTryingWhenTheDeviceIsGone) {
    muter.muteExactly({"input5"});
    computer.refuse("input5");
    muter.muteExactly({});
    computer.unplug("input5");
    EXPECT_TRUE(turnUntil(loop, [&] { return recorded().empty(); }));
}

}  // namespace
}  // namespace kovra::helper
