#include "helper/pads/GiveBack.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>
#include <vector>

#include "tests/helper/pads/MuterRig.h"

namespace kovra::helper {
namespace {

using namespace std::chrono_literals;

TEST(GiveBackPausesTest, GrowFromATwentiethOfASecondToFiveSeconds) {
    Pauses pauses;
    std::vector<std::chrono::milliseconds> seen;
    for (int i = 0; i < 9; ++i) seen.push_back(pauses.next());
    EXPECT_EQ(seen, (std::vector<std::chrono::milliseconds>{50ms, 100ms, 200ms, 400ms, 800ms, 1600ms, 3200ms, 5s, 5s}));
    pauses.startAnew();
    EXPECT_EQ(pauses.next(), 50ms);
}

class GiveBackTest : public MuterRig {};

TEST_F(GiveBackTest, GivesBackEverythingThatIsRecorded) {
    muter.muteExactly({"input5", "input6"});
    Records found(runtime);
    EXPECT_TRUE(giveBackAll(found, inputs, 0ms));
    EXPECT_TRUE(computer.isFree("input5"));
    EXPECT_TRUE(computer.isFree("input6"));
    EXPECT_EQ(recorded(), Names());
}

TEST_F(GiveBackTest, HasNothingToDoWhereNothingIsRecorded) {
    computer.plug("input5", "1\n");
    EXPECT_TRUE(giveBackAll(records, inputs, 0ms));
    EXPECT_TRUE(computer.isInhibited("input5"));
}

TEST_F(GiveBackTest, GivesUpAfterItsTimeAndKeepsTheRecord) {
    muter.muteExactly({"input5", "input6"});
    computer.refuse("input5");
    EXPECT_FALSE(giveBackAll(records, inputs, 60ms));
    EXPECT_TRUE(computer.isFree("input6"));
    EXPECT_EQ(recorded(), Names{"input5"});
}

TEST_F(GiveBackTest, IsDoneWhereTheDeviceIsHeardAlreadyThoughItTakesNoWrite) {
    muter.muteExactly({"input5"});
    computer.freeAndSeal("input5");
    EXPECT_NE(inputs.setInhibited("input5", false), 0);
    EXPECT_TRUE(giveBackAll(records, inputs, 0ms));
    EXPECT_EQ(recorded(), Names());
}

TEST_F(GiveBackTest, KeepsTheRecordWhereNoDeviceIsToBeSeen) {
    muter.muteExactly({"input5"});
    EXPECT_FALSE(giveBackAll(records, InputClass(folder / "no/sys/class/input"), 0ms));
    EXPECT_EQ(recorded(), Names{"input5"});
    EXPECT_TRUE(giveBackAll(records, inputs, 0ms));
    EXPECT_TRUE(computer.isFree("input5"));
}

TEST_F(GiveBackTest, TriesAgainWithinItsTime) {
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
