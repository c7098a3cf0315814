#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <string>

#include "helper/flag/FlagFolder.h"
#include "tests/helper/Openings.h"
#include "tests/helper/flag/FlagRig.h"

namespace kovra::helper {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

// The tests cause events in a flag folder as fast as they can, as other users of the machine may.
class FlagFolderStormTest : public testing::Test {
  protected:
    FlagFolderStormTest() {
        rig.handOver(alice);
        rig.folder().onChange = [this] { ++changes; };
    }
    // Handles all earlier events, by waiting for the notification of a new one.
    void handleEvents() {
        changes = 0;
        rig.write(alice, "on");
        ASSERT_TRUE(rig.runUntil([this] { return changes > 0; }));
    }

    FlagRig rig;
    int changes = 0;
};

TEST_F(FlagFolderStormTest, OfEventsBesideThePathCausesNoCheckOfThePath) {
    for (const std::string parent : {"", "Library/", "Library/Application Support/"}) rig.makeFolder(parent + "tmp");
    handleEvents();
    const Openings openings(rig.root());
    for (const std::string parent : {"", "Library/", "Library/Application Support/"}) {
        const std::string neighbor = rig.root() + "/" + parent + "tmp";
        ASSERT_EQ(::chmod(neighbor.c_str(), 0777), 0);
        ASSERT_EQ(::rename(neighbor.c_str(), (neighbor + "2").c_str()), 0);
        ASSERT_EQ(::rmdir((neighbor + "2").c_str()), 0);
    }
    handleEvents();
    EXPECT_EQ(openings.take(), 0);
    // A changed mode of the root folder, or of the folder Library in it, causes one check.
    for (const std::string& folder : {rig.root(), rig.root() + "/Library"}) {
        ASSERT_EQ(::chmod(folder.c_str(), 0755), 0);
        handleEvents();
        EXPECT_EQ(openings.take(), 1) << folder;
    }
}

TEST_F(FlagFolderStormTest, OfWritesCausesFewLooksAndTheLastOneCounts) {
    const auto begin = std::chrono::steady_clock::now();
    int writes = 0;
    for (; std::chrono::steady_clock::now() - begin < 400ms || changes < 12; ++writes) {
        rig.write(alice, writes % 2 == 0 ? "off" : "on");
        rig.runFor(0ms);
    }
    const auto time = std::chrono::steady_clock::now() - begin;
    EXPECT_LE(changes, 10 + time / 50ms + 1) << writes << " writes";
    changes = 0;
    rig.write(alice, "on");
    EXPECT_TRUE(rig.runUntil([this] { return changes > 0; }));
    EXPECT_TRUE(rig.isOn());
}

TEST_F(FlagFolderStormTest, IsNotWhatAFewWordsInARowAre) {
    const auto begin = std::chrono::steady_clock::now();
    for (const std::string word : {"on", "off", "on", "off"}) {
        changes = 0;
        rig.write(alice, word);
        ASSERT_TRUE(rig.runUntil([this] { return changes > 0; }));
        rig.runFor(2ms);
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 200ms);
}

TEST_F(FlagFolderStormTest, HidesNoLostFolder) {
    int losses = 0;
    rig.folder().onLost = [&] { ++losses; };
    for (int i = 0; i < 30; ++i) {
        rig.write(alice, "off");
        rig.runFor(0ms);
    }
    fs::rename(rig.path(), rig.root() + "/gone");
    EXPECT_TRUE(rig.runUntil([&] { return losses == 1; }));
}

}  // namespace
}  // namespace kovra::helper
