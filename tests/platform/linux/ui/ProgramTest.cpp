// Tests of the start and the end of the window process.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <string>

#include "BLE_kovra/platform/linux/wire/Encoding.h"
#include "BLE_kovra/platform/linux/wire/LineSocket.h"
#include "tests/support/Environment.h"

namespace kovra {
namespace {

class ProgramTest : public testing::Test {
  protected:
    ProgramTest() { environment.set("QT_QPA_PLATFORM", "offscreen"); }

    // Starts the program with this socket, or without a socket if the number is negative. The pipe `errors` receives
    // its standard error.
    void start(int socket) {
        ASSERT_EQ(::pipe2(errors.data(), O_CLOEXEC), 0);
        posix_spawn_file_actions_t actions;
        ::posix_spawn_file_actions_init(&actions);
        ::posix_spawn_file_actions_adddup2(&actions, errors[1], STDERR_FILENO);
        if (socket >= 0)
            ::posix_spawn_file_actions_adddup2(&actions, socket, windowSocket);
        else
            ::posix_spawn_file_actions_addclosefrom_np(&actions, windowSocket);
        std::array<char*, 2> arguments{const_cast<char*>(KOVRA_WINDOW_PROGRAM), nullptr};
        ASSERT_EQ(::posix_spawn(&pid, arguments[0], &actions, nullptr, arguments.data(), environ), 0);
        ::posix_spawn_file_actions_destroy(&actions);
        ::close(errors[1]);
    }
    std::string errorOutput() const {
        std::string text;
        for (char c = 0; ::read(errors[0], &c, 1) == 1;) text += c;
        ::close(errors[0]);
        return text;
    }
    int exitCode() const {
        int status = 0;
        EXPECT_EQ(::waitpid(pid, &status, 0), pid);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    Environment environment;
    std::array<int, 2> errors{};
    pid_t pid = 0;
};

TEST_F(ProgramTest, RefusesToBeStartedByHand) {
    start(-1);
    EXPECT_EQ(errorOutput(), "ble-kovra-ui: запускается программой ble-kovra, а не вручную\n");
    EXPECT_EQ(exitCode(), 2);
}

TEST_F(ProgramTest, RefusesADescriptorThatIsNotASocket) {
    const int file = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    start(file);
    ::close(file);
    EXPECT_NE(errorOutput(), "");
    EXPECT_EQ(exitCode(), 2);
}

TEST_F(ProgramTest, GivesASignOfLifeWhenItIsAsked) {
    std::array<int, 2> ends{};
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
    start(ends[1]);
    ::close(ends[1]);
    ASSERT_TRUE(sendLine(ends[0], encode(ToWindow(Ping{7}))));
    std::string line;
    for (char c = 0; ::read(ends[0], &c, 1) == 1 && c != '\n';) line += c;
    EXPECT_EQ(decodeToResident(line), ToResident(Pong{7}));
    ::close(ends[0]);
    const std::string output = errorOutput();
    EXPECT_EQ(exitCode(), 0) << output;
}

TEST_F(ProgramTest, EndsWithItsSocketWhateverItReceivedBefore) {
    for (const std::string& input : {std::string(), std::string("nonsense\n{\"is\":\"other\"}\n\xFF\n"),
                                     encode(ToWindow(ShowTray())), std::string(2'000'000, 'x')}) {
        std::array<int, 2> ends{};
        ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
        start(ends[1]);
        ::close(ends[1]);
        std::size_t sent = 0;
        while (sent < input.size()) {
            const auto count = ::send(ends[0], input.data() + sent, input.size() - sent, MSG_NOSIGNAL);
            ASSERT_GT(count, 0);
            sent += static_cast<std::size_t>(count);
        }
        ::close(ends[0]);
        const std::string output = errorOutput();
        EXPECT_EQ(exitCode(), 0) << output;
    }
}

}  // namespace
}  // namespace kovra
