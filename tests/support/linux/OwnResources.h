#pragma once

#include <malloc.h>
#include <sys/wait.h>

#include <cstddef>
#include <filesystem>
#include <iterator>

// A function of the address sanitizer, which replaces malloc. Without the sanitizer the address of the function is
// null.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes() __attribute__((weak));  // NOLINT

namespace kovra {

// The resources that this process holds, for tests that compare before and after.

inline std::size_t bytesInUse() {
    if (__sanitizer_get_current_allocated_bytes != nullptr) return __sanitizer_get_current_allocated_bytes();
    return ::mallinfo2().uordblks;
}

inline std::size_t openDescriptors() {
    const std::filesystem::directory_iterator open("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(open), end(open)));
}

// Returns whether this process has children, zombies included.
inline bool hasChildren() { return ::waitid(P_ALL, 0, nullptr, WEXITED | WNOHANG | WNOWAIT) == 0; }

}  // namespace kovra
