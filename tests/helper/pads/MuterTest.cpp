#include "helper/pads/Muter.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "tests/helper/Turning.h"
#include "tests/helper/pads/InputFolder.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra::helper {
namespace {

using namespace std::chrono_literals;
using Names = std::set<std::string>;

class HelperMuter : public testing::Test {
  protected:
    HelperMuter() {
        computer.plug("input5");
        computer.plug("input6");
    }
    Names recorded() const { return Records(runtime).names(); }

    const TempFolder folder;
    const std::string runtime = folder / "run";
    InputFolder computer;
    const InputClass inputs = computer.inputs();
    Loop loop;
    Records records{runtime};
    Muter muter{loop, records, inputs};
};

TEST_F(HelperMuter, MutesWhatItIsToldToAndNothingElse) {
    muter.muteExactly({"input5"});
    EXPECT_TRUE(computer.isInhibited("input5"));
    EXPECT_TRUE(computer.isFree("input6"));
    EXPECT_EQ(recorded(), Names{"input5"});
}

TEST_F(HelperMuter, GivesBackWhatIsNoLongerToBeMuted) {
    muter.muteExactly({"input5", "input6"});
    muter.muteExactly({"input6"});
    EXPECT_TRUE(computer.isFree("input5"));
    EXPECT_TRUE(computer.isInhibited("input6"));
    EXPECT_EQ(recorded(), Names{"input6"});
    muter.muteExactly({});
    EXPECT_TRUE(computer.isFree("input6"));
    EXPECT_EQ(recorded(), Names());
}

TEST_F(HelperMuter, GivesBackWhatAProcessBeforeItHasLeft) {
    computer.plug("input5", "1\n");
    ASSERT_EQ(Records(runtime).add("input5"), 0);
    Records found(runtime);
    Muter(loop, found, inputs).muteExactly({});
    EXPECT_TRUE(computer.isFree("input5"));
    EXPECT_EQ(recorded(), Names());
}

TEST_F(HelperMuter, LeavesAloneWhatSomebodyElseHasInhibited) {
    computer.plug("input5", "1\n");
    muter.muteExactly({"input5", "input6"});
    EXPECT_EQ(recorded(), Names{"input6"});
    muter.muteExactly({});
    EXPECT_TRUE(computer.isInhibited("input5"));
    EXPECT_TRUE(computer.isFree("input6"));
}

TEST_F(HelperMuter, DoesNotMuteWhatItCannotRecord) {
    writeFile(runtime, "a file in the way");
    muter.muteExactly({"input5"});
    EXPECT_TRUE(computer.isFree("input5"));
}

TEST_F(HelperMuter, SaysOnceThatItCannotRecord) {
    writeFile(runtime, "a file in the way");
    computer.plug("input15");
    computer.plug("input16");
    testing::internal::CaptureStderr();
    for (int i = 0; i < 3; ++i) muter.muteExactly({"input15", "input16"});
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "<4>input15 is not muted, since it cannot be recorded: Not a directory\n"
              "<4>input16 is not muted, since it cannot be recorded: Not a directory\n");
}

TEST_F(HelperMuter, GivesBackAlsoWhenItsRecordsWereTakenAway) {
    muter.muteExactly({"input5"});
    std::filesystem::remove_all(runtime);
    muter.muteExactly({});
    EXPECT_TRUE(computer.isFree("input5"));
}

TEST_F(HelperMuter, ForgetsWhatIsGone) {
    muter.muteExactly({"input5"});
    computer.unplug("input5");
    muter.muteExactly({});
    EXPECT_EQ(recorded(), Names());
}

TEST_F(HelperMuter, MutesADeviceThatCameBackUnderAnotherNumber) {
    muter.muteExactly({"input5"});
    computer.unplug("input5");
    computer.plug("input7");
    muter.muteExactly({"input7"});
    EXPECT_TRUE(computer.isInhibited("input7"));
    EXPECT_EQ(recorded(), Names{"input7"});
}

TEST_F(HelperMuter, SurvivesThatADeviceIsGoneBeforeItIsMuted) {
    computer.unplug("input5");
    muter.muteExactly({"input5", "input6"});
    EXPECT_TRUE(computer.isInhibited("input6"));
    EXPECT_EQ(recorded(), Names{"input6"});
}

TEST_F(HelperMuter, MutesAgainWhatSomebodyElseHasGivenBack) {
    muter.muteExactly({"input5"});
    computer.plug("input5", "0\n");
    std::filesystem::remove_all(runtime);
    muter.muteExactly({"input5"});
    EXPECT_TRUE(computer.isInhibited("input5"));
    EXPECT_EQ(recorded(), Names{"input5"});
}

TEST_F(HelperMuter, TakesBackTheRecordOfADeviceThatRefusesToBeMuted) {
    computer.freeAndSeal("input5");
    muter.muteExactly({"input5", "input6"});
    EXPECT_TRUE(computer.isInhibited("input6"));
    EXPECT_TRUE(computer.isFree("input5"));
    EXPECT_EQ(recorded(), Names{"input6"});
}

TEST_F(HelperMuter, LeavesAloneADeviceThatDoesNotSayWhetherItIsInhibited) {
    computer.refuse("input5");
    muter.muteExactly({"input5", "input6"});
    EXPECT_TRUE(computer.isInhibited("input6"));
    EXPECT_EQ(recorded(), Names{"input6"});
}

TEST_F(HelperMuter, TriesAgainToGiveBackWhatADriverRefuses) {
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

TEST_F(HelperMuter, StopsTryingWhenTheDeviceIsToBeMutedAgain) {
    muter.muteExactly({"input5"});
    computer.refuse("input5");
    muter.muteExactly({});
    computer.relent("input5");
    muter.muteExactly({"input5"});
    turnFor(loop, 200ms);
    EXPECT_TRUE(computer.isInhibited("input5"));
    EXPECT_EQ(recorded(), Names{"input5"});
}

TEST_F(HelperMuter, StopsTryingWhenTheDeviceIsGone) {
    muter.muteExactly({"input5"});
    computer.refuse("input5");
    muter.muteExactly({});
    computer.unplug("input5");
    EXPECT_TRUE(turnUntil(loop, [&] { return recorded().empty(); }));
}

TEST(HelperPauses, GrowFromATwentiethOfASecondToFiveSeconds) {
    Pauses pauses;
    std::vector<std::chrono::milliseconds> seen;
    for (int i = 0; i < 9; ++i) seen.push_back(pauses.next());
    EXPECT_EQ(seen, (std::vector<std::chrono::milliseconds>{50ms, 100ms, 200ms, 400ms, 800ms, 1600ms, 3200ms, 5s, 5s}));
    pauses.startAnew();
    EXPECT_EQ(pauses.next(), 50ms);
}

class HelperGiveBack : public HelperMuter {};

TEST_F(HelperGiveBack, GivesBackEverythingThatIsRecorded) {
    muter.muteExactly({"input5", "input6"});
    Records found(runtime);
    EXPECT_TRUE(giveBackAll(found, inputs, 0ms));
    EXPECT_TRUE(computer.isFree("input5"));
    EXPECT_TRUE(computer.isFree("input6"));
    EXPECT_EQ(recorded(), Names());
}

TEST_F(HelperGiveBack, HasNothingToDoWhereNothingIsRecorded) {
    computer.plug("input5", "1\n");
    EXPECT_TRUE(giveBackAll(records, inputs, 0ms));
    EXPECT_TRUE(computer.isInhibited("input5"));
}

TEST_F(HelperGiveBack, GivesUpAfterItsTimeAndKeepsTheRecord) {
    muter.muteExactly({"input5", "input6"});
    computer.refuse("input5");
    EXPECT_FALSE(giveBackAll(records, inputs, 60ms));
    EXPECT_TRUE(computer.isFree("input6"));
    EXPECT_EQ(recorded(), Names{"input5"});
}

TEST_F(HelperGiveBack, IsDoneWhereTheDeviceIsHeardAlreadyThoughItTakesNoWrite) {
    muter.muteExactly({"input5"});
    computer.freeAndSeal("input5");
    EXPECT_NE(inputs.setInhibited("input5", false), 0);
    EXPECT_TRUE(giveBackAll(records, inputs, 0ms));
    EXPECT_EQ(recorded(), Names());
}

TEST_F(HelperGiveBack, KeepsTheRecordWhereNoDeviceIsToBeSeen) {
    muter.muteExactly({"input5"});
    EXPECT_FALSE(giveBackAll(records, InputClass(folder / "no/sys/class/input"), 0ms));
    EXPECT_EQ(recorded(), Names{"input5"});
    EXPECT_TRUE(giveBackAll(records, inputs, 0ms));
    EXPECT_TRUE(computer.isFree("input5"));
}

TEST_F(HelperGiveBack, TriesAgainWithinItsTime) {
    muter.muteExactly({"input5"});
    computer.refuse("input5");
    std::thread driver([&] {
        std::this_thread::sleep_for(30ms);
        computer.relent("input5");
    });
    EXPECT_TRUE(giveBackAll(records, inputs, 20s));
    driver.join();
    EXPECT_TRUE(computer.isFree("input5"));
}

}  // namespace
}  // namespace kovra::helper
