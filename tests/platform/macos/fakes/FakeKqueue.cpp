// A fake of the part of kqueue that BLE-kovra uses. A queue is readable after one of its processes has ended, or after
// a trigger.

#include <sys/epoll.h>
#include <sys/event.h>
#include <sys/eventfd.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

#include "tests/platform/macos/fakes/FakeObject.h"

namespace {

int watch(int queue, int descriptor) {
    if (descriptor < 0) return -1;
    epoll_event event{};
    event.events = EPOLLIN;
    return ::epoll_ctl(queue, EPOLL_CTL_ADD, descriptor, &event);
}

// The real kqueue does not accept a process that is ending.
bool isEnding(pid_t process) {
    siginfo_t end{};
    return ::waitid(P_PID, static_cast<id_t>(process), &end, WEXITED | WNOHANG | WNOWAIT) == 0 && end.si_pid == process;
}

}  // namespace

extern "C" {

int kqueue() { return ::epoll_create1(EPOLL_CLOEXEC); }

int kevent(int queue, const struct kevent* changes, int changeCount, struct kevent*, int eventCount, const timespec*) {
    if (changeCount != 1 || eventCount != 0 || changes->flags != EV_ADD)
        kovra::refuse("an event queue that is not ours");
    // These descriptors stay open until the process ends, because closing one would remove it from epoll.
    if (changes->filter == EVFILT_USER && changes->fflags == NOTE_TRIGGER)
        return watch(queue, ::eventfd(1, EFD_CLOEXEC));
    if (changes->filter != EVFILT_PROC || changes->fflags != NOTE_EXIT) kovra::refuse("an event that is not ours");
    const auto process = static_cast<pid_t>(changes->ident);
    if (isEnding(process)) {
        errno = ESRCH;
        return -1;
    }
    return watch(queue, static_cast<int>(::syscall(SYS_pidfd_open, process, 0)));
}
}
