#include "BLE_kovra/platform/linux/ChildProcess.h"

#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace kovra {

std::unique_ptr<ChildProcess> ChildProcess::start(Spawn& how, const std::string& executable,
                                                  const std::vector<std::string>& arguments) {
    pid_t pid = 0;
    errno = how.start(executable, arguments, pid);
    if (errno != 0) return nullptr;
    const auto process = static_cast<int>(::syscall(SYS_pidfd_open, pid, 0));
    if (process >= 0) return std::unique_ptr<ChildProcess>(new ChildProcess(pid, process));
    // Nobody would notice its end.
    const int error = errno;
    ::kill(pid, SIGKILL);
    while (::waitpid(pid, nullptr, 0) < 0 && errno == EINTR) {
    }
    errno = error;
    return nullptr;
}

ChildProcess::~ChildProcess() {
    if (!isLetGo_) terminate();
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
