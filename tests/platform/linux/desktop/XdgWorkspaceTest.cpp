#include "BLE_kovra/platform/linux/desktop/XdgWorkspace.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cerrno>
#include <filesystem>
#include <optional>
#include <string>

#include "tests/platform/linux/loop/Turns.h"
#include "tests/support/Environment.h"
#include "tests/support/posix/Scripts.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;

class XdgWorkspaceTest : public testing::Test {
  protected:
    XdgWorkspaceTest() { environment_.set("PATH", (scripts_ / "nowhere") + ":" + (scripts_ / "") + ":/usr/bin:/bin"); }
    void TearDown() override {
        while (::waitpid(-1, nullptr, 0) > 0) {
        }
    }
    bool leaves(const std::string& file) {
        return lookUntil(loop_, [&] { return std::filesystem::exists(scripts_ / file); });
    }
    bool hasNoChild() {
        return lookUntil(loop_, [] { return ::waitid(P_ALL, 0, nullptr, WEXITED | WNOHANG | WNOWAIT) != 0; });
    }

    Scripts scripts_;
    Environment environment_;
    SdEventLoop loop_;
    XdgWorkspace workspace_{loop_};
};

TEST_F(XdgWorkspaceTest, PassesTheUrlUnchanged) {
    scripts_.make(R"(printf '%s|' "$#" "$@" >$here/writing; mv $here/writing $here/report)", "xdg-open");
    const std::string url = "mailto:somebody@example.org?subject=A%20b;`id`$HOME&body='\"";
    workspace_.open(url);
    ASSERT_TRUE(leaves("report"));
    EXPECT_EQ(scripts_.read("report"), "1|" + url + "|");
    EXPECT_TRUE(hasNoChild());
}

TEST_F(XdgWorkspaceTest, KeepsItsOutputFromOurStreams) {
    scripts_.make(
        "streams=$(readlink /proc/$$/fd/0 /proc/$$/fd/1 /proc/$$/fd/2)\n"
        "echo \"$streams\" >$here/writing; mv $here/writing $here/report",
        "xdg-open");
    workspace_.open("mailto:somebody@example.org");
    ASSERT_TRUE(leaves("report"));
    EXPECT_EQ(scripts_.read("report"), "/dev/null\n/dev/null\n/dev/null\n");
}

TEST_F(XdgWorkspaceTest, DoesNotWait) {
    scripts_.make(": >$here/begun; while ! [ -e $here/go ]; do sleep 0.02; done; : >$here/done", "xdg-open");
    workspace_.open("mailto:somebody@example.org");
    ASSERT_TRUE(leaves("begun"));
    writeFile(scripts_ / "go", "");
    EXPECT_TRUE(leaves("done"));
    EXPECT_TRUE(hasNoChild());
}

TEST_F(XdgWorkspaceTest, HasNoEffectIfTheProgramIsMissing) {
    environment_.set("PATH", scripts_ / "");
    workspace_.open("mailto:somebody@example.org");
    writeFile(scripts_ / "xdg-open", "not for running");
    workspace_.open("mailto:somebody@example.org");
    EXPECT_TRUE(hasNoChild());
    std::filesystem::remove(scripts_ / "xdg-open");
    std::filesystem::create_directory(scripts_ / "xdg-open");
    workspace_.open("mailto:somebody@example.org");
    EXPECT_TRUE(hasNoChild());
}

// On a disk that hangs, the search would not end.
TEST_F(XdgWorkspaceTest, LetsAnotherProcessSearchThePath) {
    environment_.set("PATH", scripts_ / "");
    workspace_.open("mailto:somebody@example.org");
    EXPECT_EQ(::waitid(P_ALL, 0, nullptr, WEXITED | WNOHANG | WNOWAIT), 0) << "no process was started";
    EXPECT_TRUE(hasNoChild());
}

TEST_F(XdgWorkspaceTest, OpensNothingOnceTheApplicationHasTerminated) {
    scripts_.make(": >$here/report", "xdg-open");
    loop_.stop();
    workspace_.open("mailto:somebody@example.org");
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

}  // namespace
}  // namespace kovra
