#include "BLE_kovra/platform/posix/Spawn.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <string>

#include "BLE_kovra/platform/posix/ChildProcess.h"
#include "BLE_kovra/platform/posix/OutputPipe.h"

namespace kovra {
namespace {

TEST(SpawnTest, PassesTheGivenDescriptorsAndNoOthers) {
    std::array<int, 10> ours{};
    for (int& each : ours) each = ::dup(STDERR_FILENO);
    const auto pipe = OutputPipe::open();
    Spawn how;
    pipe->giveTo(how);
    how.give(STDERR_FILENO, 8);
    how.give(STDERR_FILENO, 5);
    how.giveNothing(6);
    const auto program = ChildProcess::start(
        how, "/bin/sh", {"-c", "echo $(ls /proc/self/fd); readlink /proc/self/fd/6; read it <&6; echo lost >&6"});
    ASSERT_TRUE(program);
    pipe->closeWritingEnd();
    std::string text;
    pollfd waiting{pipe->descriptor(), POLLIN, 0};
    while (::poll(&waiting, 1, 20'000) > 0 && pipe->read(text)) {
    }
    program->reap();
    for (const int each : ours) ::close(each);
    EXPECT_EQ(text, "0 1 2 3 5 6 8\n/dev/null\n");  // ls reads the folder as 3
}

}  // namespace
}  // namespace kovra
