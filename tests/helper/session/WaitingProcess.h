#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <string>

#include "tests/helper/ProcessName.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra::helper {

// A child process that becomes this user, does some work, and then waits until it is killed. The constructor returns
// once the work is done.
class WaitingProcess {
  public:
    WaitingProcess(uid_t real, uid_t effective, const std::function<void()>& work) {
        int done[2];
        EXPECT_EQ(::pipe(done), 0);
        number_ = ::fork();
        if (number_ == 0) {
            if (::setresuid(real, effective, effective) != 0) ::_exit(1);
            work();
            if (::testing::Test::HasFailure() || ::write(done[1], "x", 1) != 1) ::_exit(1);
            while (true) ::pause();
        }
        ::close(done[1]);
        char isDone = 0;
        EXPECT_EQ(::read(done[0], &isDone, 1), 1);
        ::close(done[0]);
    }
    WaitingProcess(uid_t user, const std::function<void()>& work) : WaitingProcess(user, user, work) {}
    WaitingProcess(const WaitingProcess&) = delete;
    WaitingProcess& operator=(const WaitingProcess&) = delete;
    ~WaitingProcess() {
        kill();
        ::waitpid(number_, nullptr, 0);
    }

    pid_t number() const { return number_; }
    void signal(int which) const { ::kill(number_, which); }
    // Kills the process, which stays a zombie.
    void kill() const {
        signal(SIGKILL);
        siginfo_t how{};
        ::waitid(P_PID, static_cast<id_t>(number_), &how, WEXITED | WNOWAIT);
    }

  private:
    pid_t number_ = -1;
};

// Gives the next process this number. Requires a private machine.
inline void numberNext(pid_t number) { writeFile("/proc/sys/kernel/ns_last_pid", std::to_string(number - 1)); }

// Work for such a process: to take this name.
inline std::function<void()> named(const std::string& name) {
    return [name] { takeName(name); };
}

}  // namespace kovra::helper
