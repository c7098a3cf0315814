#include "helper/pads/MutedPads.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <set>
#include <string>

#include "tests/helper/AsRoot.h"
#include "tests/helper/Users.h"
#include "tests/support/posix/OrdinaryUser.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra::helper {
namespace {

namespace fs = std::filesystem;
using Names = std::set<std::string>;

class MutedPadsTest : public testing::Test {
  protected:
    const TempFolder folder;
    const std::string runtime = folder / "run";
    const fs::path pads = fs::path(runtime) / "pads";
};

TEST_F(MutedPadsTest, OutliveTheirProcess) {
    EXPECT_EQ(MutedPads(runtime).add("input17"), 0);
    EXPECT_EQ(MutedPads(runtime).names(), Names{"input17"});
    EXPECT_TRUE(fs::is_regular_file(pads / "input17"));
    EXPECT_EQ(fs::file_size(pads / "input17"), 0U);
}

TEST_F(MutedPadsTest, AreRemovedFromTheListOnceTheyAreUnmuted) {
    MutedPads mutedPads(runtime);
    ASSERT_EQ(mutedPads.add("input17"), 0);
    ASSERT_EQ(mutedPads.add("input4"), 0);
    mutedPads.remove("input17");
    EXPECT_EQ(mutedPads.names(), Names{"input4"});
    EXPECT_EQ(MutedPads(runtime).names(), Names{"input4"});
}

TEST_F(MutedPadsTest, NeedNoFolderUntilOneIsAdded) {
    MutedPads mutedPads(runtime);
    EXPECT_EQ(mutedPads.names(), Names());
    mutedPads.remove("input17");
    EXPECT_FALSE(fs::exists(runtime));
}

TEST_F(MutedPadsTest, AreInAFolderOfTheOwnerOnly) {
    ASSERT_EQ(MutedPads(runtime).add("input17"), 0);
    EXPECT_EQ(fs::status(pads).permissions(), fs::perms::owner_all);
}

TEST_F(MutedPadsTest, AreListedOnce) {
    MutedPads mutedPads(runtime);
    EXPECT_EQ(mutedPads.add("input17"), 0);
    EXPECT_EQ(mutedPads.add("input17"), 0);
    EXPECT_EQ(mutedPads.names(), Names{"input17"});
}

TEST_F(MutedPadsTest, AreKeptInMemoryWhenTheFolderIsRemoved) {
    MutedPads mutedPads(runtime);
    ASSERT_EQ(mutedPads.add("input17"), 0);
    fs::remove_all(runtime);
    EXPECT_EQ(mutedPads.names(), Names{"input17"});
    EXPECT_EQ(mutedPads.add("input17"), 0);
    EXPECT_EQ(MutedPads(runtime).names(), Names{"input17"});
}

TEST_F(MutedPadsTest, HaveNamesOfInputDevicesOnly) {
    for (const char* name : {"", "input", "input1/../x", "input1x", "event1", "Input1", "../input1", " input1",
                             "input123456789012345678901"}) {
        EXPECT_FALSE(MutedPads::isName(name)) << name;
        EXPECT_EQ(MutedPads(runtime).add(name), EINVAL) << name;
    }
    for (const char* name : {"input0", "input17", "input18446744073709551615"})
        EXPECT_TRUE(MutedPads::isName(name)) << name;
}

TEST_F(MutedPadsTest, IgnoreOtherFilesInTheFolder) {
    fs::create_directories(pads);
    writeFile(pads / "event3", "");
    writeFile(pads / "input", "");
    EXPECT_EQ(MutedPads(runtime).names(), Names());
    EXPECT_TRUE(fs::exists(pads / "event3"));
}

TEST_F(MutedPadsTest, FollowNoLinkInPlaceOfAnEntry) {
    fs::create_directories(pads);
    fs::create_symlink(folder / "elsewhere", pads / "input17");
    MutedPads mutedPads(runtime);
    EXPECT_EQ(mutedPads.add("input17"), ELOOP);
    EXPECT_FALSE(fs::exists(folder / "elsewhere"));
    mutedPads.remove("input17");
    EXPECT_FALSE(fs::is_symlink(pads / "input17"));
}

TEST_F(MutedPadsTest, FollowNoLinkInPlaceOfTheFolder) {
    fs::create_directories(folder / "elsewhere");
    fs::create_directories(runtime);
    fs::create_directory_symlink(folder / "elsewhere", pads);
    MutedPads mutedPads(runtime);
    EXPECT_NE(mutedPads.add("input17"), 0);
    EXPECT_TRUE(fs::is_empty(folder / "elsewhere"));
}

TEST_F(MutedPadsTest, AreNotAddedIfOthersMayWriteTheFolder) {
    fs::create_directories(pads);
    const Rights open(pads, 0777);
    EXPECT_EQ(MutedPads(runtime).add("input17"), EPERM);
    EXPECT_TRUE(fs::is_empty(pads));
}

TEST_F(MutedPadsTest, AreNotAddedIfTheFolderBelongsToAnotherUser) {
    runAsRoot([this] {
        fs::create_directories(pads);
        ASSERT_EQ(::chown(pads.c_str(), alice, alice), 0);
        EXPECT_EQ(MutedPads(runtime).add("input17"), EPERM);
        EXPECT_TRUE(fs::is_empty(pads));
    });
}

TEST_F(MutedPadsTest, AreReadAndRemovedEvenIfOthersMayWriteTheFolder) {
    fs::create_directories(pads);
    writeFile(pads / "input17", "");
    for (const std::string& open : {runtime, pads.string()}) {
        const Rights rights(open, 0775);
        EXPECT_EQ(MutedPads(runtime).names(), Names{"input17"}) << open;
    }
    const Rights rights(runtime, 0775);
    MutedPads mutedPads(runtime);
    EXPECT_EQ(mutedPads.lock(MutedPads::IfMissing::fail), 0);
    EXPECT_EQ(mutedPads.add("input4"), EPERM);
    mutedPads.remove("input17");
    EXPECT_TRUE(fs::is_empty(pads));
}

TEST_F(MutedPadsTest, ThatCannotBeReadAreAnError) {
    fs::create_directories(folder / "elsewhere");
    fs::create_directories(runtime);
    fs::create_directory_symlink(folder / "elsewhere", pads);
    EXPECT_EQ(MutedPads(runtime).lock(MutedPads::IfMissing::fail), ENOTDIR);
}

TEST_F(MutedPadsTest, AreHeldByOneProcessAtATime) {
    {
        MutedPads first(runtime);
        EXPECT_EQ(first.lock(MutedPads::IfMissing::create), 0);
        EXPECT_EQ(first.lock(MutedPads::IfMissing::create), 0);
        EXPECT_EQ(first.add("input17"), 0);
        MutedPads second(runtime);
        EXPECT_EQ(second.lock(MutedPads::IfMissing::create), EWOULDBLOCK);
        EXPECT_EQ(second.lock(MutedPads::IfMissing::fail), EWOULDBLOCK);
        EXPECT_EQ(second.add("input4"), EWOULDBLOCK);
    }
    EXPECT_EQ(MutedPads(runtime).lock(MutedPads::IfMissing::fail), 0);
    EXPECT_EQ(MutedPads(runtime).names(), Names{"input17"});
}

TEST_F(MutedPadsTest, AreUnlockedWhenTheirProcessIsKilled) {
    int started[2];
    ASSERT_EQ(::pipe(started), 0);
    const pid_t holder = ::fork();
    if (holder == 0) {
        MutedPads mutedPads(runtime);
        if (mutedPads.lock(MutedPads::IfMissing::create) == 0 && ::write(started[1], "x", 1) == 1)
            while (true) ::pause();
        ::_exit(1);
    }
    char ready = 0;
    EXPECT_EQ(::read(started[0], &ready, 1), 1);
    EXPECT_EQ(MutedPads(runtime).lock(MutedPads::IfMissing::create), EWOULDBLOCK);
    ::kill(holder, SIGKILL);
    ::waitpid(holder, nullptr, 0);
    EXPECT_EQ(MutedPads(runtime).lock(MutedPads::IfMissing::create), 0);
    ::close(started[0]);
    ::close(started[1]);
}

TEST_F(MutedPadsTest, AreReadAgainWhenTheyAreLocked) {
    MutedPads second(runtime);
    EXPECT_EQ(MutedPads(runtime).add("input17"), 0);
    EXPECT_EQ(second.lock(MutedPads::IfMissing::fail), 0);
    EXPECT_EQ(second.names(), Names{"input17"});
}

TEST_F(MutedPadsTest, AreLockedAgainIfTheFolderWasRemoved) {
    MutedPads mutedPads(runtime);
    ASSERT_EQ(mutedPads.add("input17"), 0);
    fs::remove_all(runtime);
    ASSERT_EQ(mutedPads.add("input17"), 0);
    EXPECT_EQ(MutedPads(runtime).lock(MutedPads::IfMissing::fail), EWOULDBLOCK);
}

TEST_F(MutedPadsTest, CanBeLockedWithoutCreatingTheFolder) {
    EXPECT_EQ(MutedPads(runtime).lock(MutedPads::IfMissing::fail), ENOENT);
    EXPECT_FALSE(fs::exists(runtime));
}

TEST_F(MutedPadsTest, AreNotAddedIfTheFolderCannotBeCreated) {
    writeFile(runtime, "a file in the way");
    MutedPads mutedPads(runtime);
    EXPECT_EQ(mutedPads.add("input17"), ENOTDIR);
    EXPECT_EQ(mutedPads.names(), Names());
}

}  // namespace
}  // namespace kovra::helper
