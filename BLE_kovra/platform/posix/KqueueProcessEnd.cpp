#include <sys/event.h>
#include <unistd.h>

#include <cerrno>

#include "BLE_kovra/platform/posix/ProcessEnd.h"

namespace kovra {

namespace {

// Returns 0 or the error number.
int add(int queue, uintptr_t ident, int filter, unsigned what) {
    struct kevent event{};
    EV_SET(&event, ident, static_cast<int16_t>(filter), EV_ADD, what, 0, nullptr);
    return ::kevent(queue, &event, 1, nullptr, 0, nullptr) < 0 ? errno : 0;
}

}  // namespace

// Returns a queue, which is readable once the process has ended.
int openProcessEnd(pid_t process) {
    const int queue = ::kqueue();
    if (queue < 0) return -1;
    int error = add(queue, static_cast<uintptr_t>(process), EVFILT_PROC, NOTE_EXIT);
    // kevent(2) refuses a process that is already ending, so trigger an event ourselves.
    if (error == ESRCH) error = add(queue, 0, EVFILT_USER, NOTE_TRIGGER);
    if (error == 0) return queue;
    ::close(queue);
    errno = error;
    return -1;
}

}  // namespace kovra
