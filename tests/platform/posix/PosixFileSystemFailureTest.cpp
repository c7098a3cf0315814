#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

#include "BLE_kovra/platform/posix/PosixFileSystem.h"
#include "tests/support/linux/FailingCalls.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra {
namespace {

class PosixFileSystemFailureTest : public testing::Test {
  protected:
    // Writes the word in a child process in which calls of this kind fail. Returns the reason of the failure.
    std::string writeFailingAt(unsigned call, const std::vector<int>& errors, const char* word) {
        const std::string said = folder_ / "said";
        writeFile(said, "nothing");
        const int answer = ::open(said.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
        const pid_t process = ::fork();
        if (process == 0) {
            PosixFileSystem files;
            static_cast<void>(files.writeWholeFile(folder_ / "other",
                                                   word));  // a sanitizer opens descriptors when it first checks a type
            failAt(call, errors);
            const std::string reason = files.writeWholeFile(flag_, word).reason();
            ::_exit(::write(answer, reason.data(), reason.size()) == static_cast<ssize_t>(reason.size()) ? 0 : 1);
        }
        int status = -1;
        ::waitpid(process, &status, 0);
        EXPECT_EQ(status, 0) << "no filter for system calls";
        ::close(answer);
        return readFile(said);
    }

    const TempFolder folder_;
    const std::string flag_ = folder_ / "state";
};

// Some file systems send data to a server only when a file is closed.
TEST_F(PosixFileSystemFailureTest, LeavesNoWordIfTheFileSystemFailsOnlyWhenTheFlagIsClosed) {
    for (const char* old : {"on", "off"}) {
        for (const char* word : {"on", "off"}) {
            writeFile(flag_, old);
            EXPECT_EQ(writeFailingAt(SYS_close, {EDQUOT, EDQUOT}, word), std::strerror(EDQUOT));
            EXPECT_EQ(readFile(flag_), "") << word << " after " << old;
        }
    }
}

TEST_F(PosixFileSystemFailureTest, ReportsAnErrorAtTheVeryEnd) {
    EXPECT_EQ(writeFailingAt(SYS_close, {0, EDQUOT}, "on"), std::strerror(EDQUOT));
}

TEST_F(PosixFileSystemFailureTest, LeavesNoWordIfOnlyOneStepOfTheWriteFails) {
    for (const unsigned call : {SYS_pwrite64, SYS_ftruncate}) {
        for (const char* old : {"", "o", "on", "off"}) {
            writeFile(flag_, old);
            EXPECT_EQ(writeFailingAt(call, {ENOSPC}, "on"), std::strerror(ENOSPC));
            EXPECT_EQ(readFile(flag_), "") << "after " << old;
        }
    }
}

TEST_F(PosixFileSystemFailureTest, GoesOnAfterAnInterruption) {
    for (const unsigned call : {SYS_pwrite64, SYS_close}) {
        EXPECT_EQ(writeFailingAt(call, {EINTR, EINTR}, "on"), "");
        EXPECT_EQ(readFile(flag_), "on");
    }
}

TEST_F(PosixFileSystemFailureTest, GoesOnAfterAShortWrite) {
    for (const char* old : {"on", "off", "on, but longer"}) {
        writeFile(flag_, old);
        EXPECT_EQ(writeFailingAt(SYS_pwrite64, {-1}, "off"), "");  // the first letter is there already
        EXPECT_EQ(readFile(flag_), "off") << "after " << old;
    }
}

TEST_F(PosixFileSystemFailureTest, WritesEvenIfThereIsNoDescriptorForAnEarlyClose) {
    EXPECT_EQ(writeFailingAt(SYS_fcntl, {EMFILE}, "on"), "");
    EXPECT_EQ(readFile(flag_), "on");
}

}  // namespace
}  // namespace kovra
