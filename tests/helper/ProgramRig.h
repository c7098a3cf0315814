#pragma once

#include <gtest/gtest.h>
#include <link.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

#include "tests/helper/PrivateMachine.h"
#include "tests/helper/ProcessName.h"
#include "tests/helper/ServiceManager.h"
#include "tests/helper/WaitUntil.h"
#include "tests/helper/pads/MockInputs.h"

namespace kovra::helper {

// Returns the path of the sanitizer's library and a colon, or an empty string. The library must be the first to be
// preloaded. Its path is the same in the chroot.
inline std::string sanitizer() {
    std::string found;
    const auto look = [](dl_phdr_info* library, std::size_t, void* name) {
        if (std::strstr(library->dlpi_name, "/libasan.so") == nullptr) return 0;
        *static_cast<std::string*>(name) = std::string(library->dlpi_name) + ":";
        return 1;
    };
    ::dl_iterate_phdr(look, &found);
    return found;
}

// A child process, which the destructor kills if it is still running.
class ChildProgram {
  public:
    explicit ChildProgram(const std::function<void()>& work) : number_(::fork()) {
        if (number_ != 0) return;
        work();
        ::_exit(127);
    }
    ChildProgram(const ChildProgram&) = delete;
    ChildProgram& operator=(const ChildProgram&) = delete;
    ~ChildProgram() { end(SIGKILL); }

    bool isRunning() {
        if (number_ > 0 && ::waitpid(number_, &status_, WNOHANG) == number_) number_ = 0;
        return number_ > 0;
    }
    // Waits for the process and returns its exit status. Returns -1 if a signal has ended the process, or if it does
    // not end.
    int result() {
        if (!waitUntil([this] { return !isRunning(); })) return -1;
        return WIFEXITED(status_) ? WEXITSTATUS(status_) : -1;
    }
    bool keepsRunningFor(std::chrono::milliseconds time) {
        return !waitUntil([this] { return !isRunning(); }, time);
    }
    void signal(int number) {
        if (isRunning()) ::kill(number_, number);
    }
    int end(int number) {
        signal(number);
        return result();
    }

  private:
    pid_t number_;
    int status_ = -1;
};

// The machine of the program: a chroot with its own /Library and /run. The other folders are those of this machine. The
// input devices are simulated. The user, whose session is active, may leave and arrive again.
class Machine {
  public:
    inline static const std::string root = "/run/root";
    inline static const std::string flagFolder = root + "/Library/Application Support/ble-kovra";
    // The socket of a service manager, as the programs in the chroot and as the test finds it.
    inline static const std::string notifySocket = "/run/notify";
    inline static const std::string notifySocketPath = root + notifySocket;

    explicit Machine(uid_t user) : user_(user) {
        computer.addDevice(pad);
        std::filesystem::create_directory(root);
        mount("tmpfs", root, "tmpfs", 0);
        ::chmod(root.c_str(), 0755);
        for (const auto& entry : std::filesystem::directory_iterator("/")) {
            const std::string name = entry.path().filename().string();
            if (name == "run" || name == "Library") continue;
            if (entry.is_symlink()) {
                std::filesystem::copy_symlink(entry.path(), root + "/" + name);
            } else if (entry.is_directory()) {
                std::filesystem::create_directory(root + "/" + name);
                mount("/" + name, root + "/" + name, nullptr, MS_BIND | MS_REC);
            }
        }
        for (const char* name : {"seats", "sessions", "users", "machines"})
            std::filesystem::create_directories(root + "/run/systemd/" + name);
        for (std::string path = flagFolder; path != root; path = std::filesystem::path(path).parent_path().string()) {
            std::filesystem::create_directories(path);
            ::chmod(path.c_str(), 0755);
        }
        writeFile(root + "/run/systemd/sessions/c1",
                  "UID=" + std::to_string(user) +
                      "\nUSER=somebody\nACTIVE=1\nIS_DISPLAY=1\nSTATE=active\nREMOTE=0\nTYPE=wayland\nCLASS=user\n"
                      "SEAT=seat0\n");
        arrive();
    }

    static void seat(const std::string& text) {
        writeFile(root + "/run/systemd/seats/.new", text);
        std::filesystem::rename(root + "/run/systemd/seats/.new", root + "/run/systemd/seats/seat0");
    }
    void arrive() const {
        seat("IS_SEAT0=1\nCAN_GRAPHICAL=1\nACTIVE=c1\nACTIVE_UID=" + std::to_string(user_) + "\nSESSIONS=c1\n");
    }
    static void leave() { seat("IS_SEAT0=1\nCAN_GRAPHICAL=1\n"); }

    // Starts the program with these arguments and NOTIFY_SOCKET, if they are given.
    std::unique_ptr<ChildProgram> start(const std::string& argument = {}, const std::string& socket = {},
                                        const std::string& second = {}) const {
        return std::make_unique<ChildProgram>([&] {
            ::setenv("LD_PRELOAD", (sanitizer() + KOVRA_UMOCKDEV_PRELOAD).c_str(), 1);
            if (!socket.empty()) ::setenv("NOTIFY_SOCKET", socket.c_str(), 1);
            if (isLogClosed) closeLog();
            if (::chroot(root.c_str()) != 0 || ::chdir("/") != 0) return;
            const char* given = argument.empty() ? nullptr : argument.c_str();
            const char* other = second.empty() ? nullptr : second.c_str();
            ::execl(KOVRA_HELPER, "ble-kovra-helper", given, other, nullptr);
        });
    }
    std::unique_ptr<ChildProgram> startApplication() const {
        return std::make_unique<ChildProgram>([this] {
            takeName("ble-kovra");
            if (::setresuid(user_, user_, user_) == 0)
                while (true) ::pause();
        });
    }
    // Starts the program and mutes the pad through a new flag.
    std::unique_ptr<ChildProgram> startMuted(const std::string& socket = {}) {
        std::filesystem::remove(flagFolder + "/state");
        auto helper = start({}, socket);
        if (!waitUntil([] { return std::filesystem::exists(flagFolder + "/state"); })) ADD_FAILURE() << "no flag";
        std::filesystem::resize_file(flagFolder + "/state", 0);
        std::ofstream(flagFolder + "/state", std::ios::in) << "on";
        EXPECT_TRUE(becomes("1"));
        return helper;
    }
    bool becomes(const std::string& value) const {
        return waitUntil([&] { return is(value); });
    }
    bool is(const std::string& value) const { return computer.inhibited("input5") == value; }

    MockInputs computer;
    bool isLogClosed = false;  // whether programs write their log to a pipe without a reader

  private:
    static void closeLog() {
        ::signal(SIGPIPE, SIG_DFL);  // umockdev ignores it
        int ends[2];
        if (::pipe(ends) != 0 || ::dup2(ends[1], STDERR_FILENO) < 0) ::_exit(1);
        for (const int end : ends) ::close(end);
    }
    static void mount(const std::string& what, const std::string& where, const char* type, unsigned long how) {
        if (::mount(what.c_str(), where.c_str(), type, how, nullptr) != 0)
            throw std::runtime_error("cannot mount " + where);
    }

    const uid_t user_;
};

}  // namespace kovra::helper
