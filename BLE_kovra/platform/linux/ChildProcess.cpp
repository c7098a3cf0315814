#include "BLE_kovra/platform/linux/ChildProcess.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>

namespace kovra {

namespace {

// What the program is to find, as posix_spawn(3) wants to be told.
struct Surroundings {
    Surroundings(int ours, int theirs) {
        ::posix_spawn_file_actions_init(&descriptors);
        ::posix_spawn_file_actions_adddup2(&descriptors, ours, theirs);
        ::posix_spawn_file_actions_addopen(&descriptors, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        ::posix_spawn_file_actions_addopen(&descriptors, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        for (int number = STDERR_FILENO + 1; number < theirs; ++number)
            ::posix_spawn_file_actions_addclose(&descriptors, number);
        ::posix_spawn_file_actions_addclosefrom_np(&descriptors, theirs + 1);

        ::posix_spawnattr_init(&attributes);
        ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
        sigset_t none, all;
        sigemptyset(&none);
        sigfillset(&all);
        ::posix_spawnattr_setsigmask(&attributes, &none);
        ::posix_spawnattr_setsigdefault(&attributes, &all);
    }
    ~Surroundings() {
        ::posix_spawnattr_destroy(&attributes);
        ::posix_spawn_file_actions_destroy(&descriptors);
    }
    Surroundings(const Surroundings&) = delete;
    Surroundings& operator=(const Surroundings&) = delete;

    posix_spawn_file_actions_t descriptors{};
    posix_spawnattr_t attributes{};
};

}  // namespace

std::unique_ptr<ChildProcess> ChildProcess::start(const std::string& path, int ours, int theirs) {
    const Surroundings surroundings(ours, theirs);
    const std::array<char*, 2> arguments{const_cast<char*>(path.c_str()), nullptr};
    pid_t pid = 0;
    if (::posix_spawn(&pid, path.c_str(), &surroundings.descriptors, &surroundings.attributes, arguments.data(),
                      environ) != 0)
        return nullptr;
    const auto process = static_cast<int>(::syscall(SYS_pidfd_open, pid, 0));
    if (process >= 0) return std::unique_ptr<ChildProcess>(new ChildProcess(pid, process));
    // Nobody would notice its end.
    ::kill(pid, SIGKILL);
    while (::waitpid(pid, nullptr, 0) < 0 && errno == EINTR) {
    }
    return nullptr;
}

ChildProcess::~ChildProcess() {
    terminate();
    hasEnded();
}

bool ChildProcess::hasEnded() {
    if (pid_ != 0 && ::waitpid(pid_, nullptr, WNOHANG) != 0) pid_ = 0;
    return pid_ == 0;
}

void ChildProcess::terminate() const {
    if (pid_ == 0) return;
    ::kill(pid_, SIGTERM);
    ::kill(pid_, SIGCONT);  // one that is stopped would hear of it only when it goes on
}

}  // namespace kovra
