#include "BLE_kovra/platform/linux/session/FlagHandover.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>

#include "BLE_kovra/platform/posix/PosixFileSystem.h"
#include "tests/platform/linux/loop/Turns.h"
#include "tests/support/linux/NoDescriptors.h"
#include "tests/support/posix/OrdinaryUser.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra {
namespace {

using std::chrono_literals::operator""ms;
namespace fs = std::filesystem;

// The flag has the path of a real machine, below a temporary folder.
class FlagHandoverTest : public testing::Test {
  protected:
    FlagHandoverTest() { fs::create_directories(folder_); }

    void watch() {
        handover_ = std::make_unique<FlagHandover>(loop_, flag_, [this] { ++reports_; });
    }
    // Returns whether a hand-over was reported since the last call. The kernel queues an inotify event during the
    // system call that causes it, so a few turns of the loop suffice.
    bool isReported() {
        for (int i = 0; i < 5; ++i) turn();
        return std::exchange(reports_, 0) > 0;
    }
    void turn() {
        bool turned = false;
        loop_.async([&] { turned = true; });
        loop_.runUntil([&] { return turned; });
    }
    // Replaces the flag as the helper does: writes a new file beside the flag and then exchanges the two.
    void exchange(const char* text) {
        writeFile(beside_, text);
        ASSERT_EQ(::renameat2(AT_FDCWD, beside_.c_str(), AT_FDCWD, flag_.c_str(), RENAME_EXCHANGE), 0);
    }

    // Creates the flag with this mode in a folder that this user may not write. Only root can do that. An ordinary user
    // takes the right for a moment, which is reported, too.
    void createWhereThisUserMayNot(::mode_t mode) {
        if (::geteuid() != 0) {
            ASSERT_EQ(::chmod(folder_.c_str(), 0755), 0);
        }
        fs::remove(flag_);
        const ::mode_t before = ::umask(0);
        EXPECT_EQ(::mknod(flag_.c_str(), S_IFREG | mode, 0), 0);
        ::umask(before);
        if (::geteuid() != 0) {
            ASSERT_EQ(::chmod(folder_.c_str(), 0555), 0);
        }
    }

    const TempFolder temp_;
    const fs::path library_ = temp_.path() / "Library";
    const fs::path folder_ = library_ / "Application Support/ble-kovra";
    const fs::path flag_ = folder_ / "state";
    const fs::path beside_ = folder_ / "state.new";
    SdEventLoop loop_;
    std::unique_ptr<FlagHandover> handover_;
    int reports_ = 0;
};

TEST_F(FlagHandoverTest, ReportsThatTheFlagWasExchangedForANewFile) {
    writeFile(flag_, "on");
    watch();
    EXPECT_FALSE(isReported());
    for (int round = 0; round < 3; ++round) {
        exchange("off");
        EXPECT_TRUE(isReported());
        EXPECT_FALSE(isReported());
    }
}

TEST_F(FlagHandoverTest, ReportsThatANewFileWasMovedOverTheFlag) {
    writeFile(flag_, "on");
    watch();
    writeFile(beside_, "off");
    fs::rename(beside_, flag_);
    EXPECT_TRUE(isReported());
}

TEST_F(FlagHandoverTest, DoesNotReportWritesInPlace) {
    writeFile(flag_, "off");
    watch();
    PosixFileSystem files;
    for (const char* text : {"on", "off", "on", "on", "off"}) {
        ASSERT_TRUE(files.writeWholeFile(flag_.string(), text));
        EXPECT_FALSE(isReported());
    }
    EXPECT_EQ(readFile(flag_), "off");
}

TEST_F(FlagHandoverTest, IsNotWokenByAFlagThatTheProgramItselfCreates) {
    watch();
    static_cast<void>(isReported());
    PosixFileSystem files;
    for (int round = 0; round < 2; ++round) {
        ASSERT_TRUE(files.writeWholeFile(flag_.string(), "off"));
        EXPECT_LE(turnsWithin(loop_, 100ms), 2);  // the turns of the test's own timer
        EXPECT_FALSE(isReported());
        exchange("on");
        EXPECT_TRUE(isReported());
        ASSERT_EQ(::chmod(flag_.c_str(), 0666), 0);
        EXPECT_TRUE(isReported());
        fs::remove(flag_);
    }
}

TEST_F(FlagHandoverTest, DoesNotReportOtherFilesInTheFolder) {
    writeFile(flag_, "off");
    watch();
    writeFile(beside_, "on");
    fs::rename(beside_, folder_ / "state.left.1000");
    writeFile(folder_ / "stat", "on");
    fs::remove(folder_ / "stat");
    EXPECT_FALSE(isReported());
}

TEST_F(FlagHandoverTest, ReportsChangedPermissionsOfTheFlag) {
    writeFile(flag_, "off");
    watch();
    ASSERT_EQ(::chmod(flag_.c_str(), 0666), 0);
    EXPECT_TRUE(isReported());
}

TEST_F(FlagHandoverTest, ReportsNoChangeOfAnotherUsersFlag) {
    writeFile(flag_, "off");
    fs::permissions(temp_.path(), fs::perms(0755));
    OrdinaryUser::give(flag_);
    const Rights readOnly(flag_, 0444);
    const OrdinaryUser user;
    watch();
    ASSERT_EQ(::utimensat(AT_FDCWD, flag_.c_str(), nullptr, 0), 0);
    EXPECT_FALSE(isReported());
    ASSERT_EQ(::chmod(flag_.c_str(), 0644), 0);
    EXPECT_TRUE(isReported());
}

// Another user at the machine owns the flag, and may touch it as fast as possible.
TEST_F(FlagHandoverTest, ReportsAStormOfChangesTwentyTimesASecondAndItsLastChangeInAnyCase) {
    writeFile(flag_, "off");
    watch();
    const auto begin = std::chrono::steady_clock::now();
    std::chrono::steady_clock::duration storm{};
    std::chrono::steady_clock::duration::rep most = 0;
    // A disk or processor that stalls for a moment is not a storm, so this goes on until there was one.
    for (int touches = 0; storm < 500ms || touches < 2 * most; ++touches) {
        ASSERT_LT(storm, std::chrono::seconds(20)) << "no storm, only " << touches << " changes";
        ASSERT_EQ(::chmod(flag_.c_str(), touches % 2 == 0 ? 0644 : 0664), 0);
        turn();
        storm = std::chrono::steady_clock::now() - begin;
        most = FlagHandover::mostAtOnce + storm / FlagHandover::pause + 2;
    }
    EXPECT_LE(reports_, most);
    ASSERT_EQ(::chmod(flag_.c_str(), 0600), 0);
    reports_ = 0;
    EXPECT_TRUE(turnUntil(loop_, [this] { return reports_ > 0; }));
    EXPECT_LE(turnsWithin(loop_, 200ms), 10) << "it does not sleep after the storm";
}

// Only the owner of such a folder can create the flag.
TEST_F(FlagHandoverTest, ReportsThatTheOwnerOfTheFolderHasCreatedTheFlag) {
    fs::permissions(temp_.path(), fs::perms(0755));
    const Rights readOnly(folder_, 0555);
    {
        const OrdinaryUser user;
        watch();
        EXPECT_FALSE(isReported());
    }
    for (int round = 0; round < 2; ++round) {
        createWhereThisUserMayNot(0666);
        const OrdinaryUser user;
        EXPECT_TRUE(isReported());
    }
}

// The helper may take the folder over.
TEST_F(FlagHandoverTest, ReportsACreatedFlagAfterTheUserHasLostTheRightToCreateIt) {
    fs::permissions(temp_.path(), fs::perms(0755));
    OrdinaryUser::give(folder_);
    {
        const OrdinaryUser user;
        watch();
    }
    ASSERT_EQ(::chmod(folder_.c_str(), 0555), 0);
    {
        const OrdinaryUser user;
        EXPECT_TRUE(isReported());
    }
    createWhereThisUserMayNot(0666);
    const OrdinaryUser user;
    EXPECT_TRUE(isReported());
}

// The helper may be installed, removed and installed again while the program runs.
TEST_F(FlagHandoverTest, ReportsThatTheFoldersWereCreatedHoweverOften) {
    fs::remove_all(library_);
    watch();
    for (int round = 0; round < 3; ++round) {
        fs::create_directory(library_);
        static_cast<void>(isReported());
        fs::create_directories(folder_);
        EXPECT_TRUE(isReported());
        writeFile(flag_, "off");
        exchange("on");
        EXPECT_TRUE(isReported());
        fs::remove_all(library_);
        EXPECT_FALSE(isReported());
        static_cast<void>(turnsWithin(loop_, 10 * FlagHandover::pause));  // so that it looks at once again
    }
}

TEST_F(FlagHandoverTest, ReportsThatAllFoldersWereCreatedAtOnce) {
    fs::remove_all(library_);
    watch();
    fs::create_directories(folder_);
    writeFile(flag_, "off");
    EXPECT_TRUE(isReported());
    exchange("on");
    EXPECT_TRUE(isReported());
}

// When an inotify queue is full, the kernel drops further events, including events for the flag.
TEST_F(FlagHandoverTest, ReportsAHandOverIfTheQueueOfTheKernelOverflows) {
    writeFile(flag_, "off");
    watch();
    const int most = std::stoi(readFile("/proc/sys/fs/inotify/max_queued_events"));
    const fs::path others[] = {folder_ / "even", folder_ / "odd"};
    for (const fs::path& other : others) writeFile(other, "");
    for (int i = 0; i <= most; ++i) {
        ASSERT_EQ(::chmod(others[i % 2].c_str(), 0600), 0);  // the kernel merges equal events
    }
    EXPECT_TRUE(isReported());
}

TEST_F(FlagHandoverTest, WatchesTheFolderThatReplacedAnother) {
    writeFile(flag_, "off");
    watch();
    fs::rename(folder_, folder_.parent_path() / "old");
    static_cast<void>(isReported());
    fs::create_directories(folder_);
    EXPECT_TRUE(isReported());
    writeFile(flag_, "off");
    exchange("on");
    EXPECT_TRUE(isReported());
    writeFile(folder_.parent_path() / "old/state.new", "off");
    fs::rename(folder_.parent_path() / "old/state.new", folder_.parent_path() / "old/state");
    EXPECT_FALSE(isReported());
}

TEST_F(FlagHandoverTest, ReportsNothingWhileTheFolderIsMissing) {
    fs::remove_all(library_);
    watch();
    fs::create_directory(library_);
    writeFile(library_ / "Application Support", "no folder");
    fs::remove(library_ / "Application Support");
    EXPECT_FALSE(isReported());
}

TEST_F(FlagHandoverTest, SleepsWhileNothingHappensEvenWithoutTheFolder) {
    for (const bool exists : {true, false}) {
        if (!exists) fs::remove_all(library_);
        watch();
        static_cast<void>(isReported());
        EXPECT_LE(turnsWithin(loop_, 500ms), 2);  // the turns of the test's own timer
    }
}

TEST_F(FlagHandoverTest, SleepsWhileItMayNotReadTheFolder) {
    writeFile(flag_, "off");
    fs::permissions(temp_.path(), fs::perms(0755));
    fs::permissions(folder_, fs::perms(0));
    {
        const OrdinaryUser user;
        watch();
        EXPECT_FALSE(isReported());
        EXPECT_LE(turnsWithin(loop_, 200ms), 2);  // the turns of the test's own timer
    }
    fs::permissions(folder_, fs::perms(0755));
    OrdinaryUser::give(flag_);
    {
        const OrdinaryUser user;
        EXPECT_TRUE(isReported());
    }
    exchange("on");
    EXPECT_TRUE(isReported());
}

// Tests of FlagHandover without an inotify watch. On a real machine, the user's other programs may have used up all
// watches. In these tests no descriptor can be opened for the watch at the start.
class FlagHandoverWithoutAWatchTest : public FlagHandoverTest {
  protected:
    FlagHandoverWithoutAWatchTest() {
        writeFile(flag_, "off");
        static_cast<void>(turnsWithin(loop_, 1ms));  // the loop opens the descriptor of its timer
        const NoDescriptors scope;
        handover_ = std::make_unique<FlagHandover>(loop_, flag_, [this] { ++reports_; });
    }
    int reportsWithin(std::chrono::milliseconds time) {
        static_cast<void>(turnsWithin(loop_, time));
        return std::exchange(reports_, 0);
    }
};

TEST_F(FlagHandoverWithoutAWatchTest, ReportsAHandOverOnceOneSecondAfterTheStart) {
    EXPECT_EQ(reportsWithin(900ms), 0);
    EXPECT_EQ(reportsWithin(2500ms), 1);
}

TEST_F(FlagHandoverWithoutAWatchTest, WatchesTheFlagOnceThereAreWatches) {
    ASSERT_TRUE(turnUntil(loop_, [&] { return reports_ > 0; }));
    reports_ = 0;
    exchange("on");
    EXPECT_TRUE(isReported());
    handover_->expect();
    EXPECT_EQ(reportsWithin(1500ms), 0);
}

TEST_F(FlagHandoverWithoutAWatchTest, ReportsAnExpectedHandOverOnceAfterOneSecond) {
    handover_->expect();
    EXPECT_EQ(reportsWithin(500ms), 0);
    handover_->expect();  // restarts the delay of one second
    EXPECT_EQ(reportsWithin(900ms), 0);
    EXPECT_EQ(reportsWithin(2500ms), 1);
}

TEST_F(FlagHandoverWithoutAWatchTest, ReportsNothingIfTheFolderIsMissing) {
    fs::remove_all(library_);
    handover_->expect();
    EXPECT_EQ(reportsWithin(1500ms), 0);
}

TEST_F(FlagHandoverWithoutAWatchTest, ReportsNothingAfterItIsDestroyed) {
    handover_->expect();
    handover_.reset();
    EXPECT_EQ(reportsWithin(1500ms), 0);
}

TEST_F(FlagHandoverTest, DoesNotReportAnExpectedHandOverWhileItHasAWatch) {
    writeFile(flag_, "off");
    watch();
    handover_->expect();
    static_cast<void>(turnsWithin(loop_, 1500ms));
    EXPECT_EQ(reports_, 0);
}

}  // namespace
}  // namespace kovra
