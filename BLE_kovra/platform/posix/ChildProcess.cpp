#include "BLE_kovra/platform/posix/ChildProcess.h"

#include <sys/wait.h>

#include <cerrno>
#include <csignal>

#include "BLE_kovra/platform/posix/ProcessEnd.h"

namespace kovra {

namespace {

// No signal interrupts this, since the process has no signal handlers.
void waitFor(pid_t process) { ::waitpid(process, nullptr, 0); }

}  // namespace

std::unique_ptr<ChildProcess> ChildProcess::start(Spawn& how, const std::string& executable,
                                                  const std::vector<std::string>& arguments) {
    pid_t pid = 0;
    errno = how.start(executable, arguments, pid);
    if (errno != 0) return nullptr;
    const int end = openProcessEnd(pid);
    if (end >= 0) return std::unique_ptr<ChildProcess>(new ChildProcess(pid, end));
    // Without the descriptor, this program would not notice the end of the process.
    const int error = errno;
    ::kill(pid, SIGKILL);
    waitFor(pid);
    errno = error;
    return nullptr;
}

ChildProcess::~ChildProcess() {
    if (!isReleased_) terminate();
    if (pid_ != 0) ::waitpid(pid_, nullptr, WNOHANG);  // it may have ended before anybody looked
}

void ChildProcess::reap() {
    if (pid_ != 0) waitFor(pid_);
    pid_ = 0;
}

void ChildProcess::kill() const {
    if (pid_ != 0) ::kill(pid_, SIGKILL);
}

void ChildProcess::terminate() const {
    if (pid_ == 0) return;
    ::kill(pid_, SIGTERM);
    ::kill(pid_, SIGCONT);  // a stopped process handles SIGTERM only when it continues
}

}  // namespace kovra
