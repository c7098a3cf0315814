#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>

#include "helper/Descriptor.h"
#include "tests/helper/AsRoot.h"
#include "tests/helper/BytesRead.h"
#include "tests/helper/Users.h"
#include "tests/helper/flag/FlagRig.h"
#include "tests/helper/flag/Intruders.h"

namespace kovra::helper {
namespace {

using Names = std::set<std::string>;
namespace fs = std::filesystem;

TEST(FlagFolderAttackTest, AnotherFileOfTheOwnerIsNobodysFlag) {
    FlagRig rig;
    const Secret secret(rig);
    fs::create_hard_link(secret.path(), rig.state());
    EXPECT_FALSE(rig.folder().isFlagOf(alice));
    EXPECT_FALSE(rig.folder().isFlagOf(std::nullopt));
    ASSERT_TRUE(rig.handOver(alice));
    EXPECT_TRUE(secret.isUntouched());
}

// If the sysctl fs.protected_hardlinks is 0, any user can create a hard link to the flag in a folder of their own.
TEST(FlagFolderAttackTest, ASecondNameInAnotherFolderDoesNotCountAgainstTheUser) {
    FlagRig rig;
    rig.makeFolder("theirs");
    rig.handOver(alice);
    rig.write(alice, "on");
    fs::create_hard_link(rig.state(), rig.root() + "/theirs/second");
    EXPECT_TRUE(rig.isOn());
    ASSERT_TRUE(rig.handOver(bob));
    ASSERT_TRUE(rig.handOver(alice));
    EXPECT_TRUE(rig.isOn());
}

TEST(FlagFolderAttackTest, AFlagWithASecondNameInItsFolderDoesNotCount) {
    FlagRig rig;
    rig.handOver(alice);
    rig.write(alice, "on");
    for (const std::string second : {"state.left.61001", "state.left.61002", "other"}) {
        fs::create_hard_link(rig.state(), rig.path(second));
        EXPECT_FALSE(rig.isOn()) << second;
        fs::remove(rig.path(second));
        EXPECT_TRUE(rig.isOn()) << second;
    }
}

TEST(FlagFolderAttackTest, AFileThatTheHelperHasNotCreatedKeepsItsAccessList) {
    for (const std::string list : {"u::rw-,u:61001:r--,g::---,m::r--,o::---", "u::rw-,u:61001:rw-,g::---,m::rw-,o::---",
                                   "u::rw-,u:61001:rw-,u:61002:rw-,g::r--,m::rw-,o::r--", "u::rw-,g::rw-,o::---"}) {
        FlagRig rig;
        const Secret secret(rig);
        setAccessList(secret.path(), list);
        fs::create_hard_link(secret.path(), rig.state());
        ASSERT_TRUE(rig.handOver(bob));
        EXPECT_EQ(accessList(secret.path()), list);
        EXPECT_EQ(readFile(secret.path()), "on");
        EXPECT_EQ(rig.names(), Names{"state"});
        EXPECT_TRUE(rig.folder().isFlagOf(bob));
    }
}

TEST(FlagFolderAttackTest, AFileThatTheHelperHasNotCreatedIsNotTruncated) {
    FlagRig rig;
    const std::string text(100, 'x');
    writeFile(rig.root() + "/long", text);
    setAccessList(rig.root() + "/long", "u::rw-,g::rw-,o::---");
    fs::create_hard_link(rig.root() + "/long", rig.path("state.left.61002"));
    ASSERT_TRUE(rig.handOver(alice));
    EXPECT_EQ(readFile(rig.root() + "/long"), text);
}

TEST(FlagFolderAttackTest, ASecondLinkGivesNoAccessToTheNextUsersFlag) {
    FlagRig rig;
    rig.makeFolder("theirs");
    rig.handOver(alice);
    rig.write(alice, "on");
    const std::string second = rig.root() + "/theirs/second";
    ASSERT_EQ(::link(rig.state().c_str(), second.c_str()), 0);
    ASSERT_TRUE(rig.handOver(bob));
    EXPECT_FALSE(mayWrite(alice, second));
    EXPECT_FALSE(mayWrite(alice, rig.state()));
    EXPECT_EQ(rig.content(), "off");
    // When Alice returns, the flag has the content that she wrote. It counts, because nobody else could have written
    // it.
    ASSERT_TRUE(rig.handOver(alice));
    EXPECT_TRUE(rig.isOn());
    ASSERT_TRUE(rig.handOver(bob));
    EXPECT_FALSE(mayWrite(alice, second));
}

TEST(FlagFolderAttackTest, WritesThroughADescriptorKeptOverAHandOverDoNotCount) {
    for (const std::optional<uid_t> next : {std::optional<uid_t>(bob), std::optional<uid_t>()}) {
        FlagRig rig;
        rig.handOver(alice);
        const Descriptor kept = [&] {
            const ActingAs user(alice);
            return Descriptor(::open(rig.state().c_str(), O_RDWR | O_CLOEXEC));
        }();
        void* const mapped = ::mmap(nullptr, 3, PROT_READ | PROT_WRITE, MAP_SHARED, kept.number(), 0);
        ASSERT_NE(mapped, MAP_FAILED);
        ASSERT_TRUE(rig.handOver(next));
        std::string("on").copy(static_cast<char*>(mapped), 2);
        FlagRig::writeTo(kept, "on");
        EXPECT_EQ(rig.content(), "off");
        EXPECT_FALSE(rig.isOn());
        // When Alice returns, her file with the content "on" becomes the flag again. She may write the flag now, so
        // what she writes through her old descriptor counts, too.
        ASSERT_TRUE(rig.handOver(alice));
        EXPECT_TRUE(rig.isOn());
        FlagRig::writeTo(kept, "off");
        EXPECT_FALSE(rig.isOn());
        FlagRig::writeTo(kept, "on");
        ASSERT_TRUE(rig.handOver(next));
        EXPECT_FALSE(rig.isOn());
        ::munmap(mapped, 3);
    }
}

TEST(FlagFolderAttackTest, ADescriptorForReadingCannotBeReopenedForWritingAfterAHandOver) {
    FlagRig rig;
    rig.handOver(alice);
    const Descriptor kept(::open(rig.state().c_str(), O_RDONLY | O_CLOEXEC));
    const std::string again = "/proc/self/fd/" + std::to_string(kept.number());
    EXPECT_TRUE(mayWrite(alice, again));
    ASSERT_TRUE(rig.handOver(bob));
    EXPECT_FALSE(mayWrite(alice, again));
    EXPECT_FALSE(mayWrite(alice, rig.path("state.left.61001")));
}

TEST(FlagFolderAttackTest, TheUserAtTheMachineMayWriteTheFlagAndNothingElse) {
    FlagRig rig;
    rig.handOver(alice);
    EXPECT_EQ(accessList(rig.path()), "u::rwx,g::r-x,o::r-x");
    EXPECT_EQ(accessList(rig.state()), "u::rw-,u:61001:rw-,g::r--,m::rw-,o::r--");
}

TEST(FlagFolderAttackTest, NoUserCanReplaceTheFlagNotEvenTheOneAtTheMachine) {
    runAsRoot([] {
        FlagRig rig;
        rig.handOver(alice);
        for (const uid_t user : {alice, bob}) {
            const ActingAs other(user);
            EXPECT_NE(::unlink(rig.state().c_str()), 0);
            EXPECT_NE(::rename(rig.state().c_str(), rig.path("moved").c_str()), 0);
            EXPECT_NE(::symlink("/nowhere", rig.path("state.new").c_str()), 0);
            EXPECT_NE(::mkfifo(rig.path("state.new").c_str(), 0666), 0);
            EXPECT_NE(::chmod(rig.state().c_str(), 0666), 0);
            EXPECT_NE(::chown(rig.state().c_str(), user, user), 0);
            EXPECT_LT(::open(rig.path("state.left.61002").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666), 0);
            EXPECT_THROW(setAccessList(rig.state(), "u::rw-,g::rw-,o::rw-"), std::runtime_error);
        }
        EXPECT_EQ(rig.names(), Names{"state"});
    });
}

TEST(FlagFolderAttackTest, OnlyAFewBytesOfAHugeFileAreRead) {
    FlagRig rig;
    rig.handOver(alice);
    rig.write(alice, "on");
    ASSERT_EQ(::truncate(rig.state().c_str(), off_t{1} << 40), 0);
    const long before = bytesRead();
    const long counting = bytesRead() - before;
    EXPECT_FALSE(rig.isOn());
    const long after = bytesRead();
    EXPECT_LE(after - before - 2 * counting, 4);
    ASSERT_TRUE(rig.handOver(bob));
    ASSERT_TRUE(rig.handOver(alice));
    EXPECT_LE(bytesRead() - after - counting, 64);
    EXPECT_EQ(rig.content(), "off");
}

TEST(FlagFolderAttackTest, ALinkInPlaceOfTheFolderIsNotFollowed) {
    FlagRig rig;
    rig.handOver(alice);
    const std::string trap = rig.root() + "/trap";
    fs::create_directory(trap);
    writeFile(trap + "/state", "on");
    fs::rename(rig.path(), rig.root() + "/moved");
    fs::create_directory_symlink(trap, rig.path());
    EXPECT_FALSE(rig.isOn());
    rig.handOver(bob);
    EXPECT_EQ(readFile(trap + "/state"), "on");
    EXPECT_EQ(std::distance(fs::directory_iterator(trap), fs::directory_iterator()), 1);
    EXPECT_FALSE(mayWrite(bob, trap + "/state"));
}

}  // namespace
}  // namespace kovra::helper
