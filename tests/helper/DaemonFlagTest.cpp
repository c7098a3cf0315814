#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "tests/helper/DaemonRig.h"

namespace kovra::helper {
namespace {

namespace fs = std::filesystem;

class DaemonFlagTest : public testing::Test {
  protected:
    void SetUp() override { rig.startMuted(); }
    std::string elsewhere() {
        const std::string path = rig.flag.path("elsewhere");
        writeFile(path, "on");
        return path;
    }
    void replaceFlag(const std::string& path) { fs::rename(path, rig.flag.state()); }

    DaemonRig rig;
};

TEST_F(DaemonFlagTest, ThatIsMissingUnmutesThePad) {
    fs::remove(rig.flag.state());
    EXPECT_TRUE(rig.becomes("0"));
}

TEST_F(DaemonFlagTest, ThatIsEmptyUnmutesThePad) {
    rig.flag.write(alice, "");
    EXPECT_TRUE(rig.becomes("0"));
}

TEST_F(DaemonFlagTest, ThatIsTooLongUnmutesThePad) {
    rig.flag.write(alice, "on\n");
    EXPECT_TRUE(rig.becomes("0"));
}

TEST_F(DaemonFlagTest, WithAnotherWordUnmutesThePad) {
    rig.flag.write(alice, "ON");
    EXPECT_TRUE(rig.becomes("0"));
}

TEST_F(DaemonFlagTest, ThatIsASymbolicLinkUnmutesThePad) {
    fs::create_symlink(elsewhere(), rig.flag.path("link"));
    replaceFlag(rig.flag.path("link"));
    EXPECT_TRUE(rig.becomes("0"));
}

TEST_F(DaemonFlagTest, WithASecondNameInItsFolderUnmutesThePad) {
    fs::create_hard_link(rig.flag.state(), rig.flag.path("other"));
    EXPECT_TRUE(rig.becomes("0"));
}

TEST_F(DaemonFlagTest, WithASecondNameElsewhereKeepsThePadMuted) {
    fs::create_hard_link(rig.flag.state(), rig.flag.root() + "/other");
    rig.awaitLook();
    EXPECT_TRUE(rig.is("1"));
    rig.flag.write(alice, "off");
    EXPECT_TRUE(rig.becomes("0"));
    rig.flag.write(alice, "on");
    EXPECT_TRUE(rig.becomes("1"));
}

TEST_F(DaemonFlagTest, ThatIsAPipeUnmutesThePad) {
    ASSERT_EQ(::mkfifo(rig.flag.path("pipe").c_str(), 0666), 0);
    replaceFlag(rig.flag.path("pipe"));
    EXPECT_TRUE(rig.becomes("0"));
}

TEST_F(DaemonFlagTest, ThatIsAFolderUnmutesThePad) {
    fs::remove(rig.flag.state());
    fs::create_directory(rig.flag.state());
    EXPECT_TRUE(rig.becomes("0"));
}

TEST_F(DaemonFlagTest, ThatTheHelperHasNotCreatedUnmutesThePad) {
    replaceFlag(elsewhere());
    EXPECT_TRUE(rig.becomes("0"));
}

}  // namespace
}  // namespace kovra::helper
