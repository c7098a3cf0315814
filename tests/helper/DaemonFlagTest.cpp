#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "tests/helper/DaemonRig.h"

namespace kovra::helper {
namespace {

namespace fs = std::filesystem;

// What each of these leaves is no plain file that says exactly "on".
class DaemonFlagTest : public testing::Test {
  protected:
    void SetUp() override { rig.startMuted(); }
    std::string elsewhere() {
        const std::string path = rig.flag.path("elsewhere");
        writeFile(path, "on");
        return path;
    }
    // In place of the flag, in one step.
    void put(const std::string& path) { fs::rename(path, rig.flag.state()); }

    DaemonRig rig;
};

TEST_F(DaemonFlagTest, ThatIsMissingGivesThePadBack) {
    fs::remove(rig.flag.state());
    EXPECT_TRUE(rig.becomes("0"));
}

TEST_F(DaemonFlagTest, ThatIsEmptyGivesThePadBack) {
    rig.flag.write(alice, "");
    EXPECT_TRUE(rig.becomes("0"));
}

TEST_F(DaemonFlagTest, ThatIsLongerGivesThePadBack) {
    rig.flag.write(alice, "on\n");
    EXPECT_TRUE(rig.becomes("0"));
}

TEST_F(DaemonFlagTest, ThatHasAnotherWordGivesThePadBack) {
    rig.flag.write(alice, "ON");
    EXPECT_TRUE(rig.becomes("0"));
}

TEST_F(DaemonFlagTest, ThatIsASymbolicLinkGivesThePadBack) {
    fs::create_symlink(elsewhere(), rig.flag.path("link"));
    put(rig.flag.path("link"));
    EXPECT_TRUE(rig.becomes("0"));
}

TEST_F(DaemonFlagTest, ThatHasASecondNameGivesThePadBack) {
    fs::create_hard_link(rig.flag.state(), rig.flag.path("other"));
    EXPECT_TRUE(rig.becomes("0"));
}

TEST_F(DaemonFlagTest, ThatIsAPipeGivesThePadBack) {
    ASSERT_EQ(::mkfifo(rig.flag.path("pipe").c_str(), 0666), 0);
    put(rig.flag.path("pipe"));
    EXPECT_TRUE(rig.becomes("0"));
}

TEST_F(DaemonFlagTest, ThatIsAFolderGivesThePadBack) {
    fs::remove(rig.flag.state());
    fs::create_directory(rig.flag.state());
    EXPECT_TRUE(rig.becomes("0"));
}

TEST_F(DaemonFlagTest, ThatSomebodyElsePutThereGivesThePadBack) {
    put(elsewhere());
    EXPECT_TRUE(rig.becomes("0"));
}

}  // namespace
}  // namespace kovra::helper
