#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <string>

#include "BLE_kovra/platform/posix/PosixFileSystem.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra {
namespace {

// Makes every close(2) of this process fail, as on a file system that sends data to a server only at close(2).
bool failAtClose() {
    std::array<sock_filter, 4> program{{
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_close, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EDQUOT),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    }};
    const sock_fprog filter{program.size(), program.data()};
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 && ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
}

// Writes the word in a child process in which closing a file fails. Returns the reason of the failure.
std::string writeFailingAtClose(const std::string& flag, const char* word) {
    std::array<int, 2> pipe{};
    EXPECT_EQ(::pipe(pipe.data()), 0);
    const pid_t process = ::fork();
    if (process == 0) {
        const std::string reason =
            failAtClose() ? PosixFileSystem().writeWholeFile(flag, word).reason() : "no system call filter";
        ::_exit(::write(pipe[1], reason.data(), reason.size()) == static_cast<ssize_t>(reason.size()) ? 0 : 1);
    }
    ::close(pipe[1]);
    std::string reason(256, '\0');
    const ssize_t size = ::read(pipe[0], reason.data(), reason.size());
    ::close(pipe[0]);
    ::waitpid(process, nullptr, 0);
    reason.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
    return reason;
}

TEST(PosixFileSystemCloseTest, LeavesNoWordIfTheFileSystemFailsOnlyThen) {
    const TempFolder folder;
    const std::string flag = folder / "state";
    for (const char* old : {"on", "off"}) {
        for (const char* word : {"on", "off"}) {
            writeFile(flag, old);
            EXPECT_EQ(writeFailingAtClose(flag, word), std::strerror(EDQUOT));
            EXPECT_EQ(readFile(flag), "") << word << " after " << old;
        }
    }
}

}  // namespace
}  // namespace kovra
