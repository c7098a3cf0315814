#pragma once

#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <system_error>
#include <vector>

namespace kovra {

// Returns the clocks of this process's timers, as in `man proc_pid_fdinfo`.
inline std::vector<std::string> clocksOfTimers() {
    std::vector<std::string> clocks;
    for (const auto& descriptor : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code ended;  // the descriptor of this iteration itself
        if (std::filesystem::read_symlink(descriptor, ended) != "anon_inode:[timerfd]") continue;
        std::ifstream facts("/proc/self/fdinfo/" + descriptor.path().filename().string());
        for (std::string line; std::getline(facts, line);) {
            if (line.starts_with("clockid: ")) clocks.push_back(line.substr(9));
        }
    }
    return clocks;
}

// Runs the function in a child whose clock CLOCK_BOOTTIME is 1000 s ahead of CLOCK_MONOTONIC, as if the machine had
// slept for so long. Returns the child's exit status, or a signal's number plus 128.
inline int runAfterASleep(const std::function<void()>& run) {
    const pid_t outer = ::fork();
    if (outer == 0) {
        if (::unshare(::geteuid() == 0 ? CLONE_NEWTIME : CLONE_NEWUSER | CLONE_NEWTIME) != 0) ::_exit(100);
        std::ofstream("/proc/self/timens_offsets") << "boottime 1000 0\n";
        const pid_t inner = ::fork();  // only children enter the namespace
        if (inner == 0) {
            ::alarm(30);
            timespec sinceBoot{}, awake{};
            ::clock_gettime(CLOCK_BOOTTIME, &sinceBoot);
            ::clock_gettime(CLOCK_MONOTONIC, &awake);
            if (sinceBoot.tv_sec - awake.tv_sec < 1000) ::_exit(101);
            run();
            ::_exit(0);
        }
        int status = 0;
        ::waitpid(inner, &status, 0);
        ::_exit(WIFSIGNALED(status) ? WTERMSIG(status) + 128 : WEXITSTATUS(status));
    }
    int status = 0;
    ::waitpid(outer, &status, 0);
    return WEXITSTATUS(status);
}

}  // namespace kovra
