#pragma once

#include <sys/wait.h>

#include <cstddef>
#include <filesystem>
#include <iterator>

namespace kovra {

// The descriptors and children of this process, for tests that compare before and after.

inline std::size_t openDescriptors() {
    const std::filesystem::directory_iterator open("/dev/fd");
    return static_cast<std::size_t>(std::distance(begin(open), end(open)));
}

// Returns whether this process has children, zombies included.
inline bool hasChildren() {
    siginfo_t ignored{};
    return ::waitid(P_ALL, 0, &ignored, WEXITED | WNOHANG | WNOWAIT) == 0;
}

}  // namespace kovra
