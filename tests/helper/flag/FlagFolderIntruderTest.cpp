#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <thread>

#include "tests/helper/Users.h"
#include "tests/helper/flag/FlagRig.h"
#include "tests/helper/flag/Intruders.h"

namespace kovra::helper {
namespace {

using Names = std::set<std::string>;
namespace fs = std::filesystem;
using Intruder = std::function<void(const std::string& path)>;

// Runs the test for each of the intruders(), each time with a new flag folder. Expects that the secret file is
// unchanged.
void withEachIntruder(const std::function<void(FlagRig&, const Intruder& put)>& test) {
    const FlagRig none;
    const Secret any(none);
    for (const auto& [what, ignored] : intruders(any)) {
        SCOPED_TRACE(what);
        FlagRig rig;
        const Secret secret(rig);
        test(rig, intruders(secret).at(what));
        EXPECT_TRUE(secret.isUntouched());
    }
}

TEST(FlagFolderIntruderTest, InPlaceOfTheFlagMeansOffAndIsReplacedWithoutBeingFollowed) {
    withEachIntruder([](FlagRig& rig, const Intruder& put) {
        put(rig.state());
        EXPECT_FALSE(rig.isOn());
        EXPECT_FALSE(rig.folder().isFlagOf(std::nullopt));
        EXPECT_FALSE(rig.folder().isFlagOf(alice));
        ASSERT_TRUE(rig.handOver(alice));
        EXPECT_TRUE(rig.folder().isFlagOf(alice));
        EXPECT_EQ(rig.content(), "off");
        rig.write(alice, "on");
        EXPECT_TRUE(rig.isOn());
    });
}

TEST(FlagFolderIntruderTest, InPlaceOfTheNewFileIsRemoved) {
    withEachIntruder([](FlagRig& rig, const Intruder& put) {
        put(rig.path("state.new"));
        ASSERT_TRUE(rig.handOver(alice));
        EXPECT_TRUE(rig.folder().isFlagOf(alice));
        EXPECT_EQ(rig.content(), "off");
        EXPECT_FALSE(fs::exists(fs::symlink_status(rig.path("state.new"))));
    });
}

TEST(FlagFolderIntruderTest, InPlaceOfAUsersLeftFileMeansOffAndIsRemoved) {
    withEachIntruder([](FlagRig& rig, const Intruder& put) {
        put(rig.path("state.left.61001"));
        ASSERT_TRUE(rig.handOver(alice));
        EXPECT_EQ(rig.content(), "off");
        EXPECT_FALSE(fs::exists(fs::symlink_status(rig.path("state.left.61001"))));
        // An intruder that appears while the flag belongs to Alice is replaced, too.
        put(rig.path("state.left.61001"));
        rig.write(alice, "on");
        ASSERT_TRUE(rig.handOver(bob));
        EXPECT_EQ(rig.content("state.left.61001"), "on");
    });
}

TEST(FlagFolderIntruderTest, ThatIsAFolderWithContentIsRenamedAndKept) {
    FlagRig rig;
    fs::create_directory(rig.state());
    writeFile(rig.path("state/kept"), "something");
    ASSERT_TRUE(rig.handOver(alice));
    const Names names = rig.names();
    ASSERT_EQ(names.size(), 2U);
    EXPECT_TRUE(names.rbegin()->starts_with("state.odd."));
    EXPECT_EQ(rig.content(*names.rbegin() + "/kept"), "something");
}

TEST(FlagFolderIntruderTest, ThatKeepReplacingTheFilesHaveNoEffect) {
    FlagRig rig;
    const Secret secret(rig);
    rig.makeFolder("stage");
    std::atomic<bool> isOver = false;
    std::atomic<int> swaps = 0;
    std::thread swapper([&] {
        const auto all = intruders(secret);
        const std::string staged = rig.root() + "/stage/one";
        while (!isOver) {
            for (const std::string name : {"state", "state.new", "state.left.61001", "state.left.61002"}) {
                for (const auto& [what, make] : all) {
                    if (what == "a folder with something in it")
                        continue;  // the helper keeps each such folder, so they would fill the disk
                    make(staged);
                    const std::string target = rig.path(name);
                    if (::rename(staged.c_str(), target.c_str()) == 0) ++swaps;
                    fs::remove(staged);
                }
            }
        }
    });
    int handed = 0;
    for (int round = 0; round < 3'000 || (swaps < 1'000 && round < 300'000); ++round) {
        handed += rig.handOver(round % 2 == 0 ? alice : bob) ? 1 : 0;
        // Nobody writes "on" into a flag in this test.
        EXPECT_FALSE(rig.isOn());
    }
    isOver = true;
    swapper.join();
    EXPECT_TRUE(secret.isUntouched());
    EXPECT_GT(handed, 100);
    EXPECT_GE(swaps, 1'000);
    // Hand-overs succeed again once the swapping has stopped.
    ASSERT_TRUE(rig.handOver(alice));
    ASSERT_TRUE(rig.handOver(bob));
    ASSERT_TRUE(rig.handOver(alice));
    EXPECT_TRUE(rig.folder().isFlagOf(alice));
}

}  // namespace
}  // namespace kovra::helper
