#include "BLE_kovra/platform/posix/Spawn.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>

extern char** environ;  // NOLINT(readability-redundant-declaration): not every system declares it

namespace kovra {

Spawn::Spawn() {
    ::posix_spawn_file_actions_init(&descriptors_);
    ::posix_spawnattr_init(&attributes_);
    sigset_t none, all;
    sigemptyset(&none);
    sigfillset(&all);
    ::posix_spawnattr_setsigmask(&attributes_, &none);
    ::posix_spawnattr_setsigdefault(&attributes_, &all);
}

Spawn::~Spawn() {
    ::posix_spawnattr_destroy(&attributes_);
    ::posix_spawn_file_actions_destroy(&descriptors_);
}

void Spawn::give(int ours, int theirs) {
    ::posix_spawn_file_actions_adddup2(&descriptors_, ours, theirs);
    given_.insert(theirs);
}

void Spawn::giveNothing(int theirs) {
    ::posix_spawn_file_actions_addopen(&descriptors_, theirs, "/dev/null", O_RDWR, 0);
    given_.insert(theirs);
}

void Spawn::setNewSession() { flags_ |= POSIX_SPAWN_SETSID; }

#if defined(__APPLE__)

void Spawn::closeAllOthers() {
    flags_ |= POSIX_SPAWN_CLOEXEC_DEFAULT;  // closes the standard streams too, unless they are inherited explicitly
    for (int number = STDIN_FILENO; number <= STDERR_FILENO; ++number) {
        if (!given_.contains(number)) ::posix_spawn_file_actions_addinherit_np(&descriptors_, number);
    }
}

#else

void Spawn::closeAllOthers() {
    int next = STDERR_FILENO + 1;
    for (auto given = given_.lower_bound(next); given != given_.end(); next = *given++ + 1) {
        for (int number = next; number < *given; ++number) ::posix_spawn_file_actions_addclose(&descriptors_, number);
    }
    ::posix_spawn_file_actions_addclosefrom_np(&descriptors_, next);
}

#endif

int Spawn::start(const std::string& executable, const std::vector<std::string>& arguments, pid_t& process) {
    closeAllOthers();
    ::posix_spawnattr_setflags(&attributes_, static_cast<short>(flags_));
    std::vector<char*> words{const_cast<char*>(executable.c_str())};
    for (const std::string& argument : arguments) words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);
    return ::posix_spawn(&process, executable.c_str(), &descriptors_, &attributes_, words.data(), environ);
}

}  // namespace kovra
