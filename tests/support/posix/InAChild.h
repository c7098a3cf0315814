#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <functional>

namespace kovra {

// Runs the check in a child process, whose signals, descriptors and system calls are its own, and returns its result.
inline bool holdsInAChild(const std::function<bool()>& check) {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(check() ? 0 : 1);
    int status = -1;
    ::waitpid(child, &status, 0);
    return status == 0;
}

}  // namespace kovra
