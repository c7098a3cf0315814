#pragma once

#include <cstdio>

namespace bench {

// Prints an event as one line: its time in nanoseconds of CLOCK_MONOTONIC, and what happened.
template <class... Values>
void tell(long long moment, const char* format, Values... values) {
    std::printf("%lld ", moment);
    std::printf(format, values...);
    std::putchar('\n');
    std::fflush(stdout);
}
inline void tell(long long moment, const char* what) { tell(moment, "%s", what); }

}  // namespace bench
