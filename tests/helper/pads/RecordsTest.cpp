#include "helper/pads/Records.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <set>
#include <string>

#include "tests/support/posix/OrdinaryUser.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra::helper {
namespace {

namespace fs = std::filesystem;
using Names = std::set<std::string>;

class RecordsTest : public testing::Test {
  protected:
    const TempFolder folder;
    const std::string runtime = folder / "run";
    const fs::path pads = fs::path(runtime) / "pads";
};

TEST_F(RecordsTest, OutliveTheProcessThatMadeThem) {
    EXPECT_EQ(Records(runtime).add("input17"), 0);
    EXPECT_EQ(Records(runtime).names(), Names{"input17"});
    EXPECT_TRUE(fs::is_regular_file(pads / "input17"));
    EXPECT_EQ(fs::file_size(pads / "input17"), 0U);
}

TEST_F(RecordsTest, AreGoneOnceWhatTheyNameWasGivenBack) {
    Records records(runtime);
    ASSERT_EQ(records.add("input17"), 0);
    ASSERT_EQ(records.add("input4"), 0);
    records.remove("input17");
    EXPECT_EQ(records.names(), Names{"input4"});
    EXPECT_EQ(Records(runtime).names(), Names{"input4"});
}

TEST_F(RecordsTest, NeedNoFolderUntilSomethingIsRecorded) {
    Records records(runtime);
    EXPECT_EQ(records.names(), Names());
    records.remove("input17");
    EXPECT_FALSE(fs::exists(runtime));
}

TEST_F(RecordsTest, AreForTheProgramsEyesAlone) {
    ASSERT_EQ(Records(runtime).add("input17"), 0);
    EXPECT_EQ(fs::status(pads).permissions(), fs::perms::owner_all);
}

TEST_F(RecordsTest, OfTheSameDeviceAreOne) {
    Records records(runtime);
    EXPECT_EQ(records.add("input17"), 0);
    EXPECT_EQ(records.add("input17"), 0);
    EXPECT_EQ(records.names(), Names{"input17"});
}

TEST_F(RecordsTest, AreRememberedByTheirProcessWhenTheFolderIsTakenAway) {
    Records records(runtime);
    ASSERT_EQ(records.add("input17"), 0);
    fs::remove_all(runtime);
    EXPECT_EQ(records.names(), Names{"input17"});
    EXPECT_EQ(records.add("input17"), 0);
    EXPECT_EQ(Records(runtime).names(), Names{"input17"});
}

TEST_F(RecordsTest, TakeNothingForANameThatIsNone) {
    for (const char* name : {"", "input", "input1/../x", "input1x", "event1", "Input1", "../input1", " input1",
                             "input123456789012345678901"}) {
        EXPECT_FALSE(Records::isName(name)) << name;
        EXPECT_EQ(Records(runtime).add(name), EINVAL) << name;
    }
    for (const char* name : {"input0", "input17", "input4294967295"}) EXPECT_TRUE(Records::isName(name)) << name;
}

TEST_F(RecordsTest, LeaveAloneWhatIsNoRecord) {
    fs::create_directories(pads);
    writeFile(pads / "event3", "");
    writeFile(pads / "input", "");
    EXPECT_EQ(Records(runtime).names(), Names());
    EXPECT_TRUE(fs::exists(pads / "event3"));
}

TEST_F(RecordsTest, FollowNoLinkInPlaceOfARecord) {
    fs::create_directories(pads);
    fs::create_symlink(folder / "elsewhere", pads / "input17");
    Records records(runtime);
    EXPECT_EQ(records.add("input17"), ELOOP);
    EXPECT_FALSE(fs::exists(folder / "elsewhere"));
    records.remove("input17");
    EXPECT_FALSE(fs::is_symlink(pads / "input17"));
}

TEST_F(RecordsTest, FollowNoLinkInPlaceOfTheirFolder) {
    fs::create_directories(folder / "elsewhere");
    fs::create_directories(runtime);
    fs::create_directory_symlink(folder / "elsewhere", pads);
    Records records(runtime);
    EXPECT_NE(records.add("input17"), 0);
    EXPECT_TRUE(fs::is_empty(folder / "elsewhere"));
}

TEST_F(RecordsTest, AreNotKeptWhereOthersMayWrite) {
    fs::create_directories(pads);
    const Rights open(pads, 0777);
    EXPECT_EQ(Records(runtime).add("input17"), EPERM);
    EXPECT_TRUE(fs::is_empty(pads));
}

TEST_F(RecordsTest, AreReadAndRemovedAlsoWhereOthersMayWrite) {
    fs::create_directories(pads);
    writeFile(pads / "input17", "");
    for (const std::string& open : {runtime, pads.string()}) {
        const Rights rights(open, 0775);
        EXPECT_EQ(Records(runtime).names(), Names{"input17"}) << open;
    }
    const Rights rights(runtime, 0775);
    Records records(runtime);
    EXPECT_EQ(records.claim(Records::IfMissing::leave), 0);
    EXPECT_EQ(records.add("input4"), EPERM);
    records.remove("input17");
    EXPECT_TRUE(fs::is_empty(pads));
}

TEST_F(RecordsTest, ThatCannotBeReadAreNotTakenForNone) {
    fs::create_directories(folder / "elsewhere");
    fs::create_directories(runtime);
    fs::create_directory_symlink(folder / "elsewhere", pads);
    EXPECT_EQ(Records(runtime).claim(Records::IfMissing::leave), ENOTDIR);
}

TEST_F(RecordsTest, AreOneProcesssAtATime) {
    {
        Records first(runtime);
        EXPECT_EQ(first.claim(Records::IfMissing::make), 0);
        EXPECT_EQ(first.claim(Records::IfMissing::make), 0);
        EXPECT_EQ(first.add("input17"), 0);
        Records second(runtime);
        EXPECT_EQ(second.claim(Records::IfMissing::make), EWOULDBLOCK);
        EXPECT_EQ(second.claim(Records::IfMissing::leave), EWOULDBLOCK);
        EXPECT_EQ(second.add("input4"), EWOULDBLOCK);
    }
    EXPECT_EQ(Records(runtime).claim(Records::IfMissing::leave), 0);
    EXPECT_EQ(Records(runtime).names(), Names{"input17"});
}

TEST_F(RecordsTest, AreFreeOnceTheProcessThatHadThemWasKilled) {
    int started[2];
    ASSERT_EQ(::pipe(started), 0);
    const pid_t holder = ::fork();
    if (holder == 0) {
        Records records(runtime);
        if (records.claim(Records::IfMissing::make) == 0 && ::write(started[1], "x", 1) == 1)
            while (true) ::pause();
        ::_exit(1);
    }
    char ready = 0;
    EXPECT_EQ(::read(started[0], &ready, 1), 1);
    EXPECT_EQ(Records(runtime).claim(Records::IfMissing::make), EWOULDBLOCK);
    ::kill(holder, SIGKILL);
    ::waitpid(holder, nullptr, 0);
    EXPECT_EQ(Records(runtime).claim(Records::IfMissing::make), 0);
    ::close(started[0]);
    ::close(started[1]);
}

TEST_F(RecordsTest, HoldWhatTheLastOneLeftAfterThisOneHadReadThem) {
    Records second(runtime);
    EXPECT_EQ(Records(runtime).add("input17"), 0);
    EXPECT_EQ(second.claim(Records::IfMissing::leave), 0);
    EXPECT_EQ(second.names(), Names{"input17"});
}

TEST_F(RecordsTest, AreClaimedAnewWhereTheirFolderWasTakenAway) {
    Records records(runtime);
    ASSERT_EQ(records.add("input17"), 0);
    fs::remove_all(runtime);
    ASSERT_EQ(records.add("input17"), 0);
    EXPECT_EQ(Records(runtime).claim(Records::IfMissing::leave), EWOULDBLOCK);
}

TEST_F(RecordsTest, ThatNobodyHasMadeCanBeLeftUnmade) {
    EXPECT_EQ(Records(runtime).claim(Records::IfMissing::leave), ENOENT);
    EXPECT_FALSE(fs::exists(runtime));
}

TEST_F(RecordsTest, ThatCannotBeMadeAreNoRecords) {
    writeFile(runtime, "a file in the way");
    Records records(runtime);
    EXPECT_EQ(records.add("input17"), ENOTDIR);
    EXPECT_EQ(records.names(), Names());
}

}  // namespace
}  // namespace kovra::helper
