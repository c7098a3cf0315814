#include "helper/EarlyEnds.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "tests/support/posix/TempFolder.h"

namespace kovra::helper {
namespace {

using namespace std::chrono_literals;

TEST(EarlyEndsTest, CauseDelaysThatGrowFromTheThirdInARow) {
    const TempFolder folder;
    std::vector<std::chrono::seconds> delays;
    for (int start = 0; start < 10; ++start) delays.push_back(EarlyEnds(folder / "ends").begin());
    EXPECT_EQ(delays, (std::vector<std::chrono::seconds>{0s, 0s, 0s, 4s, 8s, 16s, 32s, 64s, 64s, 64s}));
}

TEST(EarlyEndsTest, AreForgottenOnceTheyAreCleared) {
    const TempFolder folder;
    const EarlyEnds ends(folder / "ends");
    for (int start = 0; start < 5; ++start) ends.begin();
    ends.clear();
    EXPECT_EQ(ends.begin(), 0s);
    ends.clear();
    ends.clear();
}

TEST(EarlyEndsTest, AreNoneIfTheFileIsDamagedOrCannotBeWritten) {
    const TempFolder folder;
    for (const std::string text : {"", "many", "-3", "99999999999999999999"}) {
        writeFile(folder / "ends", text);
        EXPECT_LE(EarlyEnds(folder / "ends").begin(), 64s) << text;
    }
    writeFile(folder / "ends", "many");
    EXPECT_EQ(EarlyEnds(folder / "ends").begin(), 0s);
    EXPECT_EQ(EarlyEnds(folder / "missing/ends").begin(), 0s);
}

}  // namespace
}  // namespace kovra::helper
