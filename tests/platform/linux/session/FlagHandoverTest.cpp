#include "BLE_kovra/platform/linux/session/FlagHandover.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>

#include "BLE_kovra/platform/posix/PosixFileSystem.h"
#include "tests/platform/linux/loop/Turns.h"
#include "tests/support/posix/OrdinaryUser.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra {
namespace {

using std::chrono_literals::operator""ms;
namespace fs = std::filesystem;

// A machine on which the flag's folder is two folders deep, as the real one is.
class FlagHandoverTest : public testing::Test {
  protected:
    FlagHandoverTest() { fs::create_directories(folder_); }

    void watch() {
        handover_ = std::make_unique<FlagHandover>(loop_, flag_, [this] { ++told_; });
    }
    // Whether it was told since the last call. What the kernel tells it tells in the call that causes it, so that a few
    // turns of the loop are enough to hear it.
    bool isTold() {
        for (int i = 0; i < 5; ++i) turn();
        return std::exchange(told_, 0) > 0;
    }
    // What the helper does: the new file is ready beside the flag, and then the two change places.
    void exchange(const char* text) {
        writeFile(beside_, text);
        ASSERT_EQ(::renameat2(AT_FDCWD, beside_.c_str(), AT_FDCWD, flag_.c_str(), RENAME_EXCHANGE), 0);
    }

    const TempFolder temp_;
    const fs::path library_ = temp_.path() / "Library";
    const fs::path folder_ = library_ / "Application Support/ble-kovra";
    const fs::path flag_ = folder_ / "state";
    const fs::path beside_ = folder_ / "state.new";
    SdEventLoop loop_;
    std::unique_ptr<FlagHandover> handover_;
    int told_ = 0;

  private:
    void turn() {
        bool turned = false;
        loop_.async([&] { turned = true; });
        loop_.runUntil([&] { return turned; });
    }
};

TEST_F(FlagHandoverTest, TellsThatTheFlagWasExchangedForANewFile) {
    writeFile(flag_, "on");
    watch();
    EXPECT_FALSE(isTold());
    for (int round = 0; round < 3; ++round) {
        exchange("off");
        EXPECT_TRUE(isTold());
        EXPECT_FALSE(isTold());
    }
}

TEST_F(FlagHandoverTest, TellsThatANewFileWasMovedOverTheFlag) {
    writeFile(flag_, "on");
    watch();
    writeFile(beside_, "off");
    fs::rename(beside_, flag_);
    EXPECT_TRUE(isTold());
}

TEST_F(FlagHandoverTest, TellsNothingOfWhatIsWrittenInPlace) {
    writeFile(flag_, "off");
    watch();
    PosixFileSystem files;
    for (const char* text : {"on", "off", "on", "on", "off"}) {
        ASSERT_TRUE(files.writeWholeFile(flag_.string(), text));
        EXPECT_FALSE(isTold());
    }
    EXPECT_EQ(readFile(flag_), "off");
}

TEST_F(FlagHandoverTest, TellsNothingOfOtherFilesBesideTheFlag) {
    writeFile(flag_, "off");
    watch();
    writeFile(beside_, "on");
    fs::rename(beside_, folder_ / "state.left.1000");
    writeFile(folder_ / "stat", "on");
    fs::remove(folder_ / "stat");
    EXPECT_FALSE(isTold());
}

TEST_F(FlagHandoverTest, TellsThatTheRightsToTheFlagChanged) {
    writeFile(flag_, "off");
    watch();
    ASSERT_EQ(::chmod(flag_.c_str(), 0666), 0);
    EXPECT_TRUE(isTold());
}

TEST_F(FlagHandoverTest, TellsThatTheFlagHasComeIntoItsFolder) {
    watch();
    EXPECT_FALSE(isTold());
    writeFile(flag_, "off");
    EXPECT_TRUE(isTold());
    fs::remove(flag_);
    EXPECT_FALSE(isTold());
    writeFile(flag_, "off");
    EXPECT_TRUE(isTold());
}

// As when the helper is installed while the program runs, and taken away, and installed again.
TEST_F(FlagHandoverTest, TellsThatTheFoldersHaveComeHoweverOften) {
    fs::remove_all(library_);
    watch();
    for (int round = 0; round < 3; ++round) {
        fs::create_directory(library_);
        static_cast<void>(isTold());
        fs::create_directories(folder_);
        EXPECT_TRUE(isTold());
        writeFile(flag_, "off");
        EXPECT_TRUE(isTold());
        exchange("on");
        EXPECT_TRUE(isTold());
        fs::remove_all(library_);
        EXPECT_FALSE(isTold());
    }
}

TEST_F(FlagHandoverTest, TellsThatTheFoldersHaveComeAllAtOnce) {
    fs::remove_all(library_);
    watch();
    fs::create_directories(folder_);
    writeFile(flag_, "off");
    EXPECT_TRUE(isTold());
    exchange("on");
    EXPECT_TRUE(isTold());
}

TEST_F(FlagHandoverTest, FindsTheFolderThatTookThePlaceOfAnother) {
    writeFile(flag_, "off");
    watch();
    fs::rename(folder_, folder_.parent_path() / "old");
    static_cast<void>(isTold());
    fs::create_directories(folder_);
    EXPECT_TRUE(isTold());
    writeFile(flag_, "off");
    EXPECT_TRUE(isTold());
    fs::remove(folder_.parent_path() / "old/state");
    writeFile(folder_.parent_path() / "old/state", "off");
    EXPECT_FALSE(isTold());
}

TEST_F(FlagHandoverTest, TellsNothingWhileNoFolderIsThere) {
    fs::remove_all(library_);
    watch();
    fs::create_directory(library_);
    writeFile(library_ / "Application Support", "no folder");
    fs::remove(library_ / "Application Support");
    EXPECT_FALSE(isTold());
}

TEST_F(FlagHandoverTest, SleepsWhileNothingHappensAlsoWithoutTheFolder) {
    for (const bool isThere : {true, false}) {
        if (!isThere) fs::remove_all(library_);
        watch();
        static_cast<void>(isTold());
        EXPECT_LE(turnsWithin(loop_, 500ms), 2);  // the timer's own
    }
}

TEST_F(FlagHandoverTest, WaitsQuietlyForAFolderThatItMayNotRead) {
    writeFile(flag_, "off");
    fs::permissions(temp_.path(), fs::perms(0755));
    fs::permissions(folder_, fs::perms(0));
    {
        const OrdinaryUser user;
        watch();
        EXPECT_FALSE(isTold());
        EXPECT_LE(turnsWithin(loop_, 200ms), 2);  // the timer's own
    }
    fs::permissions(folder_, fs::perms(0755));
    {
        const OrdinaryUser user;
        EXPECT_TRUE(isTold());
    }
    exchange("on");
    EXPECT_TRUE(isTold());
}

// A user's programs often hold all the watches that the user may have.
class FlagHandoverWithoutAWatchTest : public FlagHandoverTest {
  protected:
    FlagHandoverWithoutAWatchTest() {
        writeFile(flag_, "off");
        static_cast<void>(turnsWithin(loop_, 1ms));  // the loop has its clock
        rlimit before{};
        ::getrlimit(RLIMIT_NOFILE, &before);
        const rlimit none{0, before.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &none);
        handover_ = std::make_unique<FlagHandover>(loop_, flag_, [this] { ++told_; });
        ::setrlimit(RLIMIT_NOFILE, &before);
    }
    // How often it tells within the time.
    int toldWithin(std::chrono::milliseconds time) {
        static_cast<void>(turnsWithin(loop_, time));
        return std::exchange(told_, 0);
    }
};

TEST_F(FlagHandoverWithoutAWatchTest, TakesItForDoneOnceASecondAfterItsStart) {
    EXPECT_EQ(toldWithin(900ms), 0);
    EXPECT_EQ(toldWithin(2500ms), 1);
}

TEST_F(FlagHandoverWithoutAWatchTest, TakesItForDoneOnceASecondAfterItIsToBeExpected) {
    ASSERT_TRUE(turnUntil(loop_, [&] { return told_ > 0; }));
    told_ = 0;
    handover_->expect();
    EXPECT_EQ(toldWithin(500ms), 0);
    handover_->expect();  // anew
    EXPECT_EQ(toldWithin(900ms), 0);
    EXPECT_EQ(toldWithin(2500ms), 1);
}

TEST_F(FlagHandoverWithoutAWatchTest, TellsNothingWhereThereIsNoFolder) {
    fs::remove_all(library_);
    handover_->expect();
    EXPECT_EQ(toldWithin(1500ms), 0);
}

TEST_F(FlagHandoverWithoutAWatchTest, TellsNothingOnceItIsGone) {
    handover_->expect();
    handover_.reset();
    EXPECT_EQ(toldWithin(1500ms), 0);
}

TEST_F(FlagHandoverTest, TellsNothingThatIsOnlyExpectedWhereItWatches) {
    writeFile(flag_, "off");
    watch();
    handover_->expect();
    static_cast<void>(turnsWithin(loop_, 1500ms));
    EXPECT_EQ(told_, 0);
}

}  // namespace
}  // namespace kovra
