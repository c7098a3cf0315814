#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>

#include "BLE_kovra/platform/posix/PosixFileSystem.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra {
namespace {

namespace fs = std::filesystem;

// Tests of a write during which another file replaces the flag.
class PosixFileSystemExchangeTest : public testing::Test {
  protected:
    PosixFileSystemExchangeTest() { writeFile(flag_, "on"); }

    // Writes "off" in a child process. Stops the process before it writes, and runs `something` meanwhile. Returns the
    // reason of the failure, or an empty text.
    std::string writeWhile(const std::function<void()>& something) {
        const std::string said = folder_ / "said";
        const pid_t process = ::fork();
        if (process == 0) {
            ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
            ::raise(SIGSTOP);
            writeFile(said, PosixFileSystem().writeWholeFile(flag_, "off").reason());
            ::_exit(0);
        }
        int status = 0;
        ::waitpid(process, &status, 0);
        ::ptrace(PTRACE_SETOPTIONS, process, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
        while (true) {
            ::ptrace(PTRACE_SYSCALL, process, nullptr, nullptr);
            ::waitpid(process, &status, 0);
            if (!WIFSTOPPED(status)) throw std::runtime_error("it never wrote");
            __ptrace_syscall_info info{};
            if (::ptrace(PTRACE_GET_SYSCALL_INFO, process, sizeof info, &info) < 0) throw std::runtime_error("no call");
            if (info.op == PTRACE_SYSCALL_INFO_ENTRY && info.entry.nr == SYS_pwrite64) break;
        }
        something();
        ::ptrace(PTRACE_CONT, process, nullptr, nullptr);
        ::waitpid(process, &status, 0);
        return readFile(said);
    }

    const TempFolder folder_;
    const std::string flag_ = folder_ / "state";
    const std::string other_ = folder_ / "other";
};

TEST_F(PosixFileSystemExchangeTest, FailsIfTheFlagIsReplacedDuringTheWrite) {
    const std::string reason = writeWhile([&] {
        writeFile(other_, "on");
        ASSERT_EQ(::renameat2(AT_FDCWD, other_.c_str(), AT_FDCWD, flag_.c_str(), RENAME_EXCHANGE), 0);
    });
    EXPECT_EQ(reason, std::strerror(ESTALE));
    EXPECT_EQ(readFile(flag_), "on");
    EXPECT_EQ(readFile(other_), "off");
}

TEST_F(PosixFileSystemExchangeTest, FailsIfTheFlagIsRemovedOrReplacedByALink) {
    EXPECT_EQ(writeWhile([&] { fs::rename(flag_, other_); }), std::strerror(ESTALE));
    fs::rename(other_, flag_);
    const std::string reason = writeWhile([&] {
        fs::rename(flag_, other_);
        fs::create_symlink(other_, flag_);
    });
    EXPECT_EQ(reason, std::strerror(ESTALE));
}

TEST_F(PosixFileSystemExchangeTest, SucceedsIfAnotherFileIsReplaced) {
    const auto something = [&] {
        writeFile(other_, "on");
        EXPECT_EQ(readFile(flag_), "on") << "a longer word is written before the size is set";
    };
    EXPECT_EQ(writeWhile(something), "");
    EXPECT_EQ(readFile(flag_), "off");
}

}  // namespace
}  // namespace kovra
