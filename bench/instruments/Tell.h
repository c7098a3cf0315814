#pragma once

#include <cstdio>

namespace bench {

// One line for whoever measures: the moment in nanoseconds of CLOCK_MONOTONIC, and what happened then.
template <class... Values>
void tell(long long moment, const char* format, Values... values) {
    std::printf("%lld ", moment);
    std::printf(format, values...);
    std::putchar('\n');
    std::fflush(stdout);
}
inline void tell(long long moment, const char* what) { tell(moment, "%s", what); }

}  // namespace bench
