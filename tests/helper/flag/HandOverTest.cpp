#include "helper/flag/HandOver.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <optional>
#include <set>
#include <string>
#include <thread>

#include "helper/Descriptor.h"
#include "tests/helper/Changes.h"
#include "tests/helper/Users.h"
#include "tests/helper/flag/FlagRig.h"

namespace kovra::helper {
namespace {

using Names = std::set<std::string>;

TEST(HandOverTest, CreatesAFlagThatSaysOffAndThatOnlyThisUserMayWrite) {
    FlagRig rig;
    ASSERT_TRUE(rig.handOver(alice));
    EXPECT_EQ(rig.content(), "off");
    EXPECT_EQ(accessList(rig.state()), "u::rw-,u:61001:rw-,g::r--,m::rw-,o::r--");
    EXPECT_TRUE(mayWrite(alice, rig.state()));
    EXPECT_FALSE(mayWrite(bob, rig.state()));
    EXPECT_EQ(rig.names(), Names{"state"});
}

TEST(HandOverTest, ToNoUserCreatesAFlagThatNoUserMayWrite) {
    FlagRig rig;
    ASSERT_TRUE(rig.handOver(alice));
    rig.write(alice, "on");
    ASSERT_TRUE(rig.handOver(std::nullopt));
    EXPECT_EQ(rig.content(), "off");
    EXPECT_FALSE(mayWrite(alice, rig.state()));
    EXPECT_FALSE(mayWrite(bob, rig.state()));
}

TEST(HandOverTest, KeepsTheContentThatAUserLeftUntilTheyReturn) {
    FlagRig rig;
    rig.handOver(alice);
    rig.write(alice, "on");
    ASSERT_TRUE(rig.handOver(bob));
    EXPECT_EQ(rig.content(), "off");
    EXPECT_EQ(rig.names(), (Names{"state", "state.left.61001"}));
    EXPECT_FALSE(mayWrite(alice, rig.path("state.left.61001")));
    ASSERT_TRUE(rig.handOver(alice));
    EXPECT_EQ(rig.content(), "on");
    EXPECT_TRUE(rig.isOn());
    EXPECT_EQ(rig.names(), (Names{"state", "state.left.61002"}));
    ASSERT_TRUE(rig.handOver(bob));
    EXPECT_EQ(rig.content(), "off");
}

ino_t inode(const std::string& path) {
    struct stat status{};
    EXPECT_EQ(::stat(path.c_str(), &status), 0);
    return status.st_ino;
}

// If the helper unlinked a user's file, a process could keep it open and fill the disk with a file that has no name.
TEST(HandOverTest, GivesEachUserOneFileForGood) {
    FlagRig rig;
    rig.handOver(alice);
    rig.write(alice, "on");
    const ino_t alices = inode(rig.state());
    ASSERT_TRUE(rig.handOver(alice));
    EXPECT_EQ(inode(rig.state()), alices);
    EXPECT_EQ(rig.content(), "on");
    EXPECT_EQ(rig.names(), Names{"state"});
    ASSERT_TRUE(rig.handOver(bob));
    const ino_t bobs = inode(rig.state());
    EXPECT_NE(bobs, alices);
    EXPECT_EQ(inode(rig.path("state.left.61001")), alices);
    ASSERT_TRUE(rig.handOver(alice));
    EXPECT_EQ(inode(rig.state()), alices);
    EXPECT_EQ(inode(rig.path("state.left.61002")), bobs);
}

TEST(HandOverTest, NeverLeavesTheFlagMissing) {
    FlagRig rig;
    rig.handOver(alice);
    std::atomic<bool> isOver = false;
    int missing = 0;
    int opened = 0;
    std::thread reader([&] {
        while (!isOver) {
            const Descriptor file(::open(rig.state().c_str(), O_RDONLY | O_CLOEXEC));
            ++(file.isOpen() ? opened : missing);
        }
    });
    for (int round = 0; round < 2'000; ++round) rig.handOver(round % 2 == 0 ? bob : alice);
    isOver = true;
    reader.join();
    EXPECT_EQ(missing, 0);
    EXPECT_GT(opened, 100);
}

TEST(HandOverTest, ReplacesTheFlagOfTheInstallation) {
    FlagRig rig;
    writeFile(rig.state(), "off");
    ::chmod(rig.state().c_str(), 0644);
    EXPECT_TRUE(rig.folder().isFlagOf(std::nullopt));
    EXPECT_FALSE(rig.folder().isFlagOf(alice));
    ASSERT_TRUE(rig.handOver(alice));
    EXPECT_TRUE(rig.folder().isFlagOf(alice));
    EXPECT_FALSE(rig.folder().isFlagOf(bob));
    EXPECT_FALSE(rig.folder().isFlagOf(std::nullopt));
    EXPECT_EQ(rig.names(), Names{"state"});
}

TEST(HandOverTest, TruncatesALongFlagToAFewBytes) {
    FlagRig rig;
    rig.handOver(alice);
    rig.write(alice, std::string(100'000, 'x'));
    const Descriptor keptOpen(::open(rig.state().c_str(), O_RDONLY | O_CLOEXEC));
    const Changes changes({rig.path()});
    ASSERT_TRUE(rig.handOver(std::nullopt));
    EXPECT_EQ(rig.content("state.left.61001"), "xxx");
    EXPECT_EQ(changes.first(), rig.state()) << "a full disk may have no room for the second name";
    ASSERT_TRUE(rig.handOver(alice));
    EXPECT_EQ(rig.content(), "off");
    struct stat status{};
    ASSERT_EQ(::fstat(keptOpen.number(), &status), 0);
    EXPECT_EQ(status.st_size, 3);
}

long bytesOnDisk(const Descriptor& file) {
    struct stat status{};
    EXPECT_EQ(::fstat(file.number(), &status), 0);
    return status.st_blocks * 512;
}

TEST(HandOverTest, FreesSpaceAllocatedBeyondTheEndOfTheFlag) {
    FlagRig rig;
    rig.handOver(alice);
    rig.write(alice, "on");
    const Descriptor keptOpen = [&] {
        const ActingAs user(alice);
        return Descriptor(::open(rig.state().c_str(), O_RDWR | O_CLOEXEC));
    }();
    for (const std::optional<uid_t> next : {std::optional<uid_t>(), std::optional<uid_t>(bob)}) {
        ASSERT_EQ(::fallocate(keptOpen.number(), FALLOC_FL_KEEP_SIZE, 0, 1 << 20), 0);
        ASSERT_GE(bytesOnDisk(keptOpen), 1 << 20);
        ASSERT_TRUE(rig.handOver(next));
        EXPECT_LE(bytesOnDisk(keptOpen), 1 << 16);
        EXPECT_EQ(rig.content("state.left.61001"), "on");
    }
    ASSERT_TRUE(rig.handOver(alice));
    EXPECT_TRUE(rig.isOn());
}

TEST(HandOverTest, TruncatesWhatAUserKeepsWritingWhileAway) {
    FlagRig rig;
    rig.handOver(alice);
    const Descriptor keptOpen(::open(rig.state().c_str(), O_RDWR | O_CLOEXEC));
    rig.handOver(std::nullopt);
    FlagRig::writeTo(keptOpen, std::string(100'000, 'x'));
    rig.handOver(bob);
    EXPECT_EQ(rig.content("state.left.61001"), "xxx");
    FlagRig::writeTo(keptOpen, "on");
    rig.handOver(alice);
    EXPECT_TRUE(rig.isOn());
}

}  // namespace
}  // namespace kovra::helper
