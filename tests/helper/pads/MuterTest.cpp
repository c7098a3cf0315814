#include "helper/pads/Muter.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <vector>

#include "tests/helper/RunUntil.h"
#include "tests/helper/Users.h"
#include "tests/helper/pads/MuterRig.h"

namespace kovra::helper {
namespace {

using namespace std::chrono_literals;

class MuterTest : public MuterRig {};

TEST_F(MuterTest, MutesTheGivenDevicesOnly) {
    muter.muteOnly({"input5"});
    EXPECT_TRUE(computer.isInhibited("input5"));
    EXPECT_TRUE(computer.isActive("input6"));
    EXPECT_EQ(recordedPads(), Names{"input5"});
}

TEST_F(MuterTest, UnmutesDevicesThatAreNotGivenAnyMore) {
    muter.muteOnly({"input5", "input6"});
    muter.muteOnly({"input6"});
    EXPECT_TRUE(computer.isActive("input5"));
    EXPECT_TRUE(computer.isInhibited("input6"));
    EXPECT_EQ(recordedPads(), Names{"input6"});
    muter.muteOnly({});
    EXPECT_TRUE(computer.isActive("input6"));
    EXPECT_EQ(recordedPads(), Names());
}

TEST_F(MuterTest, ReportsTheFirstMutedPadAndTheEndOfTheLast) {
    std::vector<bool> reports;
    muter.onChange = [&](bool isAnyMuted) { reports.push_back(isAnyMuted); };
    muter.muteOnly({});
    muter.muteOnly({"input5"});
    muter.muteOnly({"input5", "input6"});
    muter.muteOnly({"input6"});
    EXPECT_EQ(reports, std::vector{true});
    muter.muteOnly({});
    EXPECT_EQ(reports, (std::vector{true, false}));
}

TEST_F(MuterTest, UnmutesWhatAnEarlierProcessHasLeft) {
    computer.plug("input5", "1\n");
    ASSERT_EQ(MutedPads(runtime).add("input5"), 0);
    MutedPads found(runtime);
    Muter(loop, found, attribute).muteOnly({});
    EXPECT_TRUE(computer.isActive("input5"));
    EXPECT_EQ(recordedPads(), Names());
}

TEST_F(MuterTest, LeavesADeviceAloneThatAnotherProgramHasInhibited) {
    computer.plug("input5", "1\n");
    testing::internal::CaptureStderr();
    for (int i = 0; i < 2; ++i) muter.muteOnly({"input5", "input6"});
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "<4>input5 is inhibited by somebody else, and left alone\n");
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

TEST_F(MuterTest, LogsThatItCannotRecordOnceUntilTheDeviceIsToBeMutedAgain) {
    writeFile(runtime, "a file in the way");
    computer.plug("input15");
    computer.plug("input16");
    testing::internal::CaptureStderr();
    const std::string lines =
        "<4>input15 is not muted, since it cannot be recorded: Not a directory\n"
        "<4>input16 is not muted, since it cannot be recorded: Not a directory\n";
    for (int i = 0; i < 3; ++i) muter.muteOnly({"input15", "input16"});
    EXPECT_EQ(testing::internal::GetCapturedStderr(), lines);
    testing::internal::CaptureStderr();
    muter.muteOnly({});
    for (int i = 0; i < 3; ++i) muter.muteOnly({"input15", "input16"});
    EXPECT_EQ(testing::internal::GetCapturedStderr(), lines);
}

TEST_F(MuterTest, UnmutesEvenIfTheListWasRemoved) {
    muter.muteOnly({"input5"});
    std::filesystem::remove_all(runtime);
    muter.muteOnly({});
    EXPECT_TRUE(computer.isActive("input5"));
}

TEST_F(MuterTest, RemovesADeviceThatIsGoneFromTheList) {
    muter.muteOnly({"input5"});
    computer.unplug("input5");
    muter.muteOnly({});
    EXPECT_EQ(recordedPads(), Names());
}

TEST_F(MuterTest, MutesADeviceThatReturnsUnderAnotherNumber) {
    muter.muteOnly({"input5"});
    computer.unplug("input5");
    computer.plug("input7");
    muter.muteOnly({"input7"});
    EXPECT_TRUE(computer.isInhibited("input7"));
    EXPECT_EQ(recordedPads(), Names{"input7"});
}

TEST_F(MuterTest, IgnoresADeviceThatIsGoneBeforeItIsMuted) {
    computer.unplug("input5");
    muter.muteOnly({"input5", "input6"});
    EXPECT_TRUE(computer.isInhibited("input6"));
    EXPECT_EQ(recordedPads(), Names{"input6"});
}

TEST_F(MuterTest, MutesADeviceAgainThatAnotherProgramHasUnmuted) {
    muter.muteOnly({"input5"});
    computer.plug("input5", "0\n");
    std::filesystem::remove_all(runtime);
    muter.muteOnly({"input5"});
    EXPECT_TRUE(computer.isInhibited("input5"));
    EXPECT_EQ(recordedPads(), Names{"input5"});
}

TEST_F(MuterTest, RemovesADeviceThatCannotBeMutedFromTheList) {
    computer.activateAndSeal("input5");
    muter.muteOnly({"input5", "input6"});
    EXPECT_TRUE(computer.isInhibited("input6"));
    EXPECT_TRUE(computer.isActive("input5"));
    EXPECT_EQ(recordedPads(), Names{"input6"});
}

// Until udev's rule has been applied, only root may write the attribute of a new device.
class MuterRightTest : public MuterRig {
  protected:
    MuterRightTest() { computer.keepFromUser("input5"); }

    const WithoutCapabilities none;
};

TEST_F(MuterRightTest, IsAwaited) {
    testing::internal::CaptureStderr();
    muter.muteOnly({"input5", "input6"});
    EXPECT_TRUE(computer.isInhibited("input6"));
    EXPECT_TRUE(computer.isActive("input5"));
    EXPECT_EQ(recordedPads(), Names{"input6"});
    computer.giveToUser("input5");
    EXPECT_TRUE(runUntil(loop, [&] { return computer.isInhibited("input5"); }));
    EXPECT_EQ(recordedPads(), (Names{"input5", "input6"}));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(MuterRightTest, IsMissedInOneLineAfterSomeSeconds) {
    testing::internal::CaptureStderr();
    muter.muteOnly({"input5", "input6"});
    runFor(loop, 2s);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    testing::internal::CaptureStderr();
    runFor(loop, 5s);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "<4>input5 cannot be muted: udev has not given it to the helper\n");
    EXPECT_EQ(recordedPads(), Names{"input6"});
    muter.muteOnly({});
    EXPECT_TRUE(computer.isActive("input6"));
    EXPECT_EQ(recordedPads(), Names());
}

TEST_F(MuterRightTest, IsAwaitedNoLongerThanTheDeviceIsToBeMuted) {
    muter.muteOnly({"input5"});
    muter.muteOnly({});
    computer.giveToUser("input5");
    runFor(loop, 200ms);
    EXPECT_TRUE(computer.isActive("input5"));
}

TEST_F(MuterTest, LeavesADeviceAloneWhoseAttributeCannotBeRead) {
    computer.refuseWrites("input5");
    muter.muteOnly({"input5", "input6"});
    EXPECT_TRUE(computer.isInhibited("input6"));
    EXPECT_EQ(recordedPads(), Names{"input6"});
}

TEST_F(MuterTest, RetriesToUnmuteADeviceWhoseDriverRefuses) {
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

TEST_F(MuterTest, RetriesSoonAgainAfterAnotherRequest) {
    muter.muteOnly({"input5"});
    computer.refuseWrites("input5");
    muter.muteOnly({});
    runFor(loop, 2s);
    muter.muteOnly({});
    computer.acceptWrites("input5");
    // If the delays went on growing, the next one would be 3.2 s.
    EXPECT_TRUE(runUntil(loop, [&] { return computer.isActive("input5"); }, 3s));
}

TEST_F(MuterTest, StopsRetryingWhenTheDeviceIsToBeMutedAgain) {
    muter.muteOnly({"input5", "input6"});
    for (const char* device : {"input5", "input6"}) computer.refuseWrites(device);
    muter.muteOnly({});
    computer.acceptWrites("input5");
    muter.muteOnly({"input5"});
    computer.acceptWrites("input6");
    EXPECT_TRUE(runUntil(loop, [&] { return computer.isActive("input6"); }));
    EXPECT_TRUE(computer.isInhibited("input5"));
    EXPECT_EQ(recordedPads(), Names{"input5"});
}

TEST_F(MuterTest, StopsRetryingWhenTheDeviceIsGone) {
    muter.muteOnly({"input5"});
    computer.refuseWrites("input5");
    muter.muteOnly({});
    computer.unplug("input5");
    EXPECT_TRUE(runUntil(loop, [&] { return recordedPads().empty(); }));
}

}  // namespace
}  // namespace kovra::helper
