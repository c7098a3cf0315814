#include <gtest/gtest.h>
#include <sched.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <set>
#include <stdexcept>
#include <string>

#include "tests/helper/PrivateMachine.h"
#include "tests/helper/flag/FlagRig.h"
#include "tests/support/linux/NoDescriptors.h"

namespace kovra::helper {
namespace {

namespace fs = std::filesystem;

void limitWatches(int number) { writeFile("/proc/sys/user/max_inotify_watches", std::to_string(number)); }

// Runs the body in a new user namespace, which has a limit of its own for inotify watches. The argument of the body is
// the only UID in that namespace.
void withLimitedWatches(const std::function<void(uid_t)>& body) {
    inPrivateMachine([&](uid_t) {
        if (::unshare(CLONE_NEWUSER) != 0) throw std::runtime_error("no namespace of its own");
        writeFile("/proc/self/uid_map", "0 0 1");
        limitWatches(100);
        body(0);
    });
}

TEST(FlagFolderUnwatchedTest, FlagIsOffAndBelongsToNoUserUntilItIsWatched) {
    withLimitedWatches([](uid_t user) {
        FlagRig rig;
        ASSERT_TRUE(rig.handOver(user));
        rig.write(user, "on");
        ASSERT_TRUE(rig.isOn());
        rig.reopen();
        limitWatches(4);  // enough for the flag's folder and the three above it, but not for the flag
        EXPECT_FALSE(rig.isOn());
        EXPECT_FALSE(rig.folder().isFlagOf(user));
        testing::internal::CaptureStderr();
        EXPECT_FALSE(rig.handOver(user));
        EXPECT_NE(testing::internal::GetCapturedStderr().find("the flag cannot be watched"), std::string::npos);
        EXPECT_FALSE(rig.isOn());
        limitWatches(5);
        EXPECT_TRUE(rig.handOver(user));
        EXPECT_TRUE(rig.folder().isFlagOf(user));
        EXPECT_TRUE(rig.isOn());
    });
}

TEST(FlagFolderUnwatchedTest, FlagIsNotReplacedAgainForTheSameUser) {
    withLimitedWatches([](uid_t user) {
        FlagRig rig;
        rig.folder();
        limitWatches(4);
        EXPECT_FALSE(rig.handOver(user));
        struct stat before{};
        ASSERT_EQ(::stat(rig.state().c_str(), &before), 0);
        EXPECT_FALSE(rig.handOver(user));
        struct stat after{};
        ASSERT_EQ(::stat(rig.state().c_str(), &after), 0);
        EXPECT_EQ(before.st_ino, after.st_ino);
        EXPECT_FALSE(rig.handOver(std::nullopt));
        EXPECT_EQ(rig.content(), "off");
        EXPECT_EQ(rig.names(), (std::set<std::string>{"state", "state.left.0"}));
    });
}

// The event of another file arrives while no descriptor is left to open it.
TEST(FlagFolderUnwatchedTest, FlagThatCannotBeOpenedIsNotWatched) {
    FlagRig rig;
    const uid_t user = ::geteuid();
    ASSERT_TRUE(rig.handOver(user));
    rig.write(user, "on");
    ASSERT_TRUE(rig.isOn());
    rig.folder().onChange = [&] { rig.loop().stop(); };
    rig.loop().run();  // once before, since the sanitizers need descriptors at first
    fs::rename(rig.state(), rig.path("former"));
    fs::rename(rig.path("former"), rig.state());
    {
        const NoDescriptors scope;
        rig.loop().run();
    }
    EXPECT_FALSE(rig.isOn());
    EXPECT_FALSE(rig.folder().isFlagOf(user));
    EXPECT_TRUE(rig.handOver(user));
    EXPECT_TRUE(rig.isOn());
}

TEST(FlagFolderUnwatchedTest, FlagThatReplacesAWatchedOneIsOff) {
    withLimitedWatches([](uid_t user) {
        FlagRig rig;
        ASSERT_TRUE(rig.handOver(user));
        rig.write(user, "on");
        fs::copy_file(rig.state(), rig.path("other"));
        int changes = 0;
        rig.folder().onChange = [&] { ++changes; };
        limitWatches(4);
        fs::rename(rig.path("other"), rig.state());
        ASSERT_TRUE(rig.runUntil([&] { return changes > 0; }));
        EXPECT_FALSE(rig.isOn());
        limitWatches(5);
        ASSERT_TRUE(rig.handOver(user));
        changes = 0;
        rig.write(user, "on");
        EXPECT_TRUE(rig.runUntil([&] { return changes > 0; }));
    });
}

}  // namespace
}  // namespace kovra::helper
