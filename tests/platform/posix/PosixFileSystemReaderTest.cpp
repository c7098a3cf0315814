#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <new>
#include <string>
#include <string_view>

#include "BLE_kovra/platform/posix/PosixFileSystem.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra {
namespace {

// The variables that the writer and the reader share. The writer increments `step` before and after each write. At step
// 0 the file contains "off", at step 1 the writer writes "on", at step 2 the file contains "on", and so on.
struct Shared {
    std::atomic<unsigned> step{0};
    std::atomic<bool> finished{false};
    std::atomic<unsigned> reads{0};
    std::atomic<unsigned> empty{0};
    std::atomic<unsigned> wrong{0};
};

void pollWithoutPause(const std::string& path, Shared& shared, pid_t writer) {
    while (!shared.finished && ::getppid() == writer) {
        const unsigned before = shared.step;
        char buffer[16];
        const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
        const ssize_t size = file < 0 ? 0 : ::read(file, buffer, sizeof buffer);
        ::close(file);
        const unsigned after = shared.step;
        const std::string_view seen(buffer, size > 0 ? static_cast<std::size_t>(size) : 0);
        if (seen.empty()) ++shared.empty;
        if (before == after && before % 4 == 0 && seen != "off") ++shared.wrong;
        if (before == after && before % 4 == 2 && seen != "on") ++shared.wrong;
        ++shared.reads;
    }
}

TEST(PosixFileSystemReaderTest, SeesNoEmptyFileAndNoWrongWord) {
    constexpr unsigned fewest = 20000, most = 500000;
    const TempFolder folder;
    const std::string path = folder / "state";
    PosixFileSystem files;
    ASSERT_TRUE(files.writeWholeFile(path, "off"));
    void* memory = ::mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    Shared& shared = *new (memory) Shared;

    const pid_t writer = ::getpid();
    const pid_t reader = ::fork();
    ASSERT_GE(reader, 0);
    if (reader == 0) {
        pollWithoutPause(path, shared, writer);
        ::_exit(0);
    }
    unsigned flips = 0;
    while (flips < most && (flips < fewest || shared.reads < fewest)) {
        ++shared.step;
        if (!files.writeWholeFile(path, flips % 2 == 0 ? "on" : "off")) break;
        ++shared.step;
        ++flips;
    }
    shared.finished = true;
    int status = -1;
    ::waitpid(reader, &status, 0);

    EXPECT_EQ(status, 0);
    EXPECT_GE(flips, fewest);
    EXPECT_GE(shared.reads, fewest);
    EXPECT_EQ(shared.empty, 0U);
    EXPECT_EQ(shared.wrong, 0U);
    ::munmap(memory, sizeof(Shared));
}

}  // namespace
}  // namespace kovra
