#pragma once

#include <sys/types.h>

#include <ctime>

namespace bench {

inline long long nanoseconds(clockid_t clock) {
    timespec time{};
    if (::clock_gettime(clock, &time) != 0) return 0;
    return time.tv_sec * 1'000'000'000LL + time.tv_nsec;
}

inline long long now() { return nanoseconds(CLOCK_MONOTONIC); }

// Returns the CPU time of the given process so far; 0 if there is no such process.
inline long long cpuTime(pid_t process) {
    clockid_t clock{};
    return ::clock_getcpuclockid(process, &clock) == 0 ? nanoseconds(clock) : 0;
}

}  // namespace bench
