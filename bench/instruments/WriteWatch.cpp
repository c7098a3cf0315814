// Prints "watching", and then a line each time that a process closes one of the named files after writing. The line
// contains the index of the file, and the time in seconds of CLOCK_MONOTONIC. The files must exist. Runs until killed.

#include <sched.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <cstdio>
#include <ctime>

int main(int count, char** arguments) {
    // Run before all processes of normal priority, so that the times are accurate.
    const sched_param priority{10};
    const int watch = ::inotify_init1(IN_CLOEXEC);
    if (watch < 0 || ::sched_setscheduler(0, SCHED_FIFO, &priority) != 0) return 1;
    for (int file = 1; file < count; ++file) {
        if (::inotify_add_watch(watch, arguments[file], IN_CLOSE_WRITE) != file) {
            std::perror(arguments[file]);
            return 1;
        }
    }
    std::puts("watching");
    for (;;) {
        std::fflush(stdout);
        inotify_event event{};
        if (::read(watch, &event, sizeof event) != sizeof event) return 1;
        timespec now{};
        ::clock_gettime(CLOCK_MONOTONIC, &now);
        std::printf("%d %lld.%09ld\n", event.wd - 1, static_cast<long long>(now.tv_sec), now.tv_nsec);
    }
}
