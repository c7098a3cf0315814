#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>

#include "BLE_kovra/platform/linux/loop/SdEventLoop.h"
#include "BLE_kovra/platform/posix/PosixProcessRunner.h"
#include "BLE_kovra/system/DriverActivator.h"
#include "tests/fakes/FakeFileSystem.h"
#include "tests/fakes/FakeLog.h"
#include "tests/support/posix/Scripts.h"

namespace kovra {
namespace {

// A runner that starts a program of the test in place of the listing tool, with the same arguments.
class Substitute : public ProcessRunner {
  public:
    Substitute(ProcessRunner& real, std::string program) : real_(real), program_(std::move(program)) {}
    std::optional<std::string> output(const Command& command) override {
        EXPECT_EQ(command.executable, DriverActivator::listingTool);
        return real_.output({program_, command.arguments});
    }
    Outcome start(const Command&) override { return Outcome::failure("not here"); }

  private:
    ProcessRunner& real_;
    std::string program_;
};

class DriverListingTest : public testing::Test {
  protected:
    bool isActiveWhere(const std::string& script) { return isActive(scripts_.make(script)); }
    bool isActive(const std::string& program) {
        Substitute processes(processes_, program);
        const bool isActive = DriverActivator(processes, files_, log_).isExtensionActive();
        EXPECT_TRUE(log_.lines.empty());
        return isActive;
    }
    // Returns a shell command that prints a listing with the driver in this state.
    static std::string lists(const std::string& state, const std::string& identifier = DriverActivator::extensionID) {
        return "printf '1 extension(s)\\n\\n*\\t*\\tTEAM000000\\t" + identifier + " (1.0/1.0)\\tdriver\\t[" + state +
               "]\\n'\n";
    }

    Scripts scripts_;
    SdEventLoop loop_;
    PosixProcessRunner processes_{loop_};
    FakeFileSystem files_;
    FakeLog log_;
};

const std::string active = "activated enabled";

TEST_F(DriverListingTest, IsActiveOnlyWhereItIsActivatedAndEnabled) {
    EXPECT_TRUE(isActiveWhere(lists(active)));
    EXPECT_FALSE(isActiveWhere(lists("activated waiting for user")));
    EXPECT_FALSE(isActiveWhere(lists("activated disabled")));
    EXPECT_FALSE(isActiveWhere(lists(active, "org.example.AnotherDriver")));
    EXPECT_TRUE(isActiveWhere(lists("terminated waiting to uninstall on reboot") + lists(active)));
    EXPECT_FALSE(isActiveWhere(""));
}

TEST_F(DriverListingTest, RunsTheToolWithTheArgumentList) {
    EXPECT_TRUE(isActiveWhere("[ \"$#:$1\" = 1:list ] || exit 1\n" + lists(active)));
}

TEST_F(DriverListingTest, IsActiveWhicheverStreamSaysSo) {
    EXPECT_TRUE(isActiveWhere("exec >&2\n" + lists(active)));
    EXPECT_TRUE(
        isActiveWhere("printf 'activated enabled '; printf %s " + std::string(DriverActivator::extensionID) + " >&2"));
}

TEST_F(DriverListingTest, IsActiveBelowTenMillionBytesAndAboveThem) {
    EXPECT_TRUE(isActiveWhere("yes 'another extension' | head -c 10485760; echo\n" + lists(active)));
    EXPECT_TRUE(isActiveWhere(lists(active) + "yes 'another extension' | head -c 10485760"));
    EXPECT_FALSE(isActiveWhere("yes 'another extension' | head -c 10485760"));
}

TEST_F(DriverListingTest, IsActiveHoweverTheToolEnds) {
    EXPECT_TRUE(isActiveWhere(lists(active) + "exit 7"));
    EXPECT_TRUE(isActiveWhere(lists(active) + "kill -KILL $$"));
    EXPECT_TRUE(isActiveWhere("(sleep 0.2\n" + lists(active) + ") & exit 0"));
    EXPECT_TRUE(isActiveWhere("echo\necho\n" + lists(active) + "echo; echo; printf 'no line feed'"));
    EXPECT_TRUE(isActiveWhere("printf '%s activated enabled' " + std::string(DriverActivator::extensionID)));
}

TEST_F(DriverListingTest, IsNotActiveIfTheOutputIsNotUtf8) {
    EXPECT_FALSE(isActiveWhere(lists(active) + "printf '\\377\\n'"));
}

TEST_F(DriverListingTest, IsNotActiveIfTheToolCannotBeStarted) {
    EXPECT_FALSE(isActive(scripts_ / "missing"));
    writeFile(scripts_ / "not for running", "#!/bin/sh\n" + lists(active));
    EXPECT_FALSE(isActive(scripts_ / "not for running"));
}

}  // namespace
}  // namespace kovra
