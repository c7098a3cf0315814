#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <string>
#include <utility>

namespace kovra {

// A real dbus-daemon for one test. For as long as this object lives, the environment variable `variable` contains the
// daemon's address.
class PrivateBus {
  public:
    // `limits` are elements for the daemon's configuration. If they are given, a minimal configuration with these
    // elements replaces the standard one of session buses.
    explicit PrivateBus(std::string variable, const std::string& limits = "") : variable_(std::move(variable)) {
        if (!limits.empty()) configure(limits);
        start();
    }
    ~PrivateBus() {
        end();
        if (!configuration_.empty()) ::unlink(configuration_.c_str());
        ::unsetenv(variable_.c_str());
    }
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    // Kills the daemon. Its address remains in the environment.
    void end() {
        if (pid_ <= 0) return;
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
        pid_ = 0;
        ::unlink(socket_.c_str());  // a killed daemon leaves its socket behind
    }

    // Starts another daemon at the same address.
    void restart() {
        end();
        start();
    }

  private:
    void configure(const std::string& limits) {
        configuration_ = "/tmp/private-bus-XXXXXX";
        const int file = ::mkstemp(configuration_.data());
        const std::string text =
            "<busconfig><type>session</type><listen>unix:tmpdir=/tmp</listen><auth>EXTERNAL</auth>"
            "<policy context=\"default\"><allow send_destination=\"*\"/><allow receive_sender=\"*\"/><allow own=\"*\"/>"
            "</policy>" +
            limits + "</busconfig>";
        EXPECT_EQ(::write(file, text.data(), text.size()), static_cast<ssize_t>(text.size()));
        ::close(file);
    }

    // Starts a daemon at the previous address, if there is one.
    void start() {
        std::array<int, 2> out{};
        EXPECT_EQ(::pipe2(out.data(), O_CLOEXEC), 0);
        posix_spawn_file_actions_t actions;
        ::posix_spawn_file_actions_init(&actions);
        ::posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
        const std::string again = "--address=unix:path=" + socket_;
        const std::string configuration = configuration_.empty() ? "--session" : "--config-file=" + configuration_;
        std::array<const char*, 6> arguments{
            "dbus-daemon", configuration.c_str(), "--nofork", "--print-address=1", nullptr, nullptr};
        if (!socket_.empty()) arguments[4] = again.c_str();
        EXPECT_EQ(
            ::posix_spawnp(&pid_, "dbus-daemon", &actions, nullptr, const_cast<char**>(arguments.data()), environ), 0);
        ::posix_spawn_file_actions_destroy(&actions);
        ::close(out[1]);
        std::string address;
        for (char c = 0; ::read(out[0], &c, 1) == 1 && c != '\n';) address += c;
        ::close(out[0]);
        const std::string kind = "unix:path=";
        EXPECT_TRUE(address.starts_with(kind)) << address;
        socket_ = address.substr(kind.size(), address.find(',') - kind.size());
        ::setenv(variable_.c_str(), address.c_str(), 1);
    }

    std::string variable_;
    std::string socket_;
    std::string configuration_;  // a file; empty for the standard configuration
    pid_t pid_ = 0;
};

}  // namespace kovra
