#include "BLE_kovra/platform/linux/session/InstanceLock.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <string>

#include "tests/support/Environment.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra {
namespace {

using State = InstanceLock::State;

class InstanceLockTest : public testing::Test {
  protected:
    const TempFolder folder_;
    const std::string path_ = folder_ / "lock";
};

TEST_F(InstanceLockTest, IsHeldByTheFirstAlone) {
    const InstanceLock first(path_);
    EXPECT_EQ(first.state(), State::held);
    EXPECT_EQ(InstanceLock(path_).state(), State::heldElsewhere);
    EXPECT_EQ(InstanceLock(path_).state(), State::heldElsewhere);
}

TEST_F(InstanceLockTest, IsFreeAgainAfterItsEnd) {
    {
        const InstanceLock first(path_);
    }
    EXPECT_EQ(InstanceLock(path_).state(), State::held);
}

TEST_F(InstanceLockTest, IsFreeAgainAfterItsProcessWasKilled) {
    const pid_t process = ::fork();
    if (process == 0) {
        const InstanceLock first(path_);
        ::raise(SIGKILL);
    }
    ASSERT_EQ(::waitpid(process, nullptr, 0), process);
    EXPECT_TRUE(std::filesystem::exists(path_));
    EXPECT_EQ(InstanceLock(path_).state(), State::held);
}

TEST_F(InstanceLockTest, IsNotInheritedByPrograms) {
    const InstanceLock first(path_);
    const std::string command = "for each in /proc/self/fd/*; do readlink $each; done | grep -qF " + path_;
    EXPECT_NE(std::system(command.c_str()), 0);
}

TEST_F(InstanceLockTest, IsMissingWhereItsFileCannotBeCreated) {
    EXPECT_EQ(InstanceLock(folder_ / "missing/lock").state(), State::none);
    EXPECT_EQ(InstanceLock("").state(), State::none);
    std::filesystem::create_directory(path_);
    EXPECT_EQ(InstanceLock(path_).state(), State::none);
}

TEST_F(InstanceLockTest, DoesNotFollowALink) {
    std::filesystem::create_symlink(folder_ / "elsewhere", path_);
    EXPECT_EQ(InstanceLock(path_).state(), State::none);
    EXPECT_EQ(folder_.names(), std::set<std::string>{"lock"});
}

TEST_F(InstanceLockTest, DoesNotWaitForThePipeInItsPlace) {
    ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0);
    EXPECT_EQ(InstanceLock(path_).state(), State::held);
}

class InstanceLockPathTest : public testing::Test {
  protected:
    InstanceLockPathTest() {
        environment_.unset({"XDG_RUNTIME_DIR"});
        environment_.set("XDG_CONFIG_HOME", "/somewhere/config");
    }
    Environment environment_;
};

TEST_F(InstanceLockPathTest, IsInTheRuntimeFolder) {
    environment_.set("XDG_RUNTIME_DIR", "/run/user/7");
    EXPECT_EQ(standardLockPath(), "/run/user/7/ble-kovra.lock");
}

TEST_F(InstanceLockPathTest, IsInTheUsualRuntimeFolderIfTheVariableIsNotSet) {
    const TempFolder folders;
    const std::string own = folders / std::to_string(::geteuid());
    std::filesystem::create_directory(own);
    EXPECT_EQ(standardLockPath(folders.path()), own + "/ble-kovra.lock");
}

TEST_F(InstanceLockPathTest, IsBesideThePreferencesAndNamedAfterTheMachineIfThereIsNoRuntimeFolder) {
    utsname machine{};
    ASSERT_EQ(::uname(&machine), 0);
    EXPECT_EQ(standardLockPath("/nowhere"), std::string("/somewhere/config/ble-kovra/lock.") + machine.nodename);
    environment_.set("XDG_RUNTIME_DIR", "relative");
    EXPECT_EQ(standardLockPath("/nowhere"), std::string("/somewhere/config/ble-kovra/lock.") + machine.nodename);
}

}  // namespace
}  // namespace kovra
