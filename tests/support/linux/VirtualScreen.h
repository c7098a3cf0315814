#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <string>
#include <thread>

namespace kovra {

// An X server without a screen (Xvfb), for one test. For as long as this object lives, DISPLAY contains the server's
// address.
class VirtualScreen {
  public:
    explicit VirtualScreen(std::string size = "320x200x24") {
        std::array<int, 2> out{};
        EXPECT_EQ(::pipe2(out.data(), O_CLOEXEC), 0);
        posix_spawn_file_actions_t actions;
        ::posix_spawn_file_actions_init(&actions);
        ::posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
        ::posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        std::array arguments{const_cast<char*>("Xvfb"),      const_cast<char*>("-displayfd"),
                             const_cast<char*>("1"),         const_cast<char*>("-screen"),
                             const_cast<char*>("0"),         size.data(),
                             const_cast<char*>("-nolisten"), const_cast<char*>("tcp"),
                             const_cast<char*>("-noreset"),  static_cast<char*>(nullptr)};
        EXPECT_EQ(::posix_spawnp(&pid_, "Xvfb", &actions, nullptr, arguments.data(), environ), 0);
        ::posix_spawn_file_actions_destroy(&actions);
        ::close(out[1]);
        std::string number;
        for (char c = 0; ::read(out[0], &c, 1) == 1 && c != '\n';) number += c;
        ::close(out[0]);
        EXPECT_FALSE(number.empty()) << "Xvfb did not start";
        ::setenv("DISPLAY", (":" + number).c_str(), 1);
    }
    ~VirtualScreen() {
        end();
        ::unsetenv("DISPLAY");
    }
    VirtualScreen(const VirtualScreen&) = delete;
    VirtualScreen& operator=(const VirtualScreen&) = delete;

    // Suspends the server: it answers no request until goOn().
    void pause() const { ::kill(pid_, SIGSTOP); }
    void goOn() const { ::kill(pid_, SIGCONT); }

    // Ends the server. Its address remains in DISPLAY.
    //
    // The signal is repeated until the server has ended. The server looks for it before it waits for its clients, and
    // misses one that arrives in between until something wakes it.
    void end() {
        if (pid_ <= 0) return;
        while (::waitpid(pid_, nullptr, WNOHANG) == 0) {
            ::kill(pid_, SIGTERM);
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        pid_ = 0;
    }

  private:
    pid_t pid_ = 0;
};

}  // namespace kovra
