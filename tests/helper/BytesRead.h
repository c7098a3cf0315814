#pragma once

#include <fstream>
#include <stdexcept>
#include <string>

namespace kovra::helper {

inline long bytesRead() {
    std::ifstream io("/proc/thread-self/io");
    std::string label;
    long value = 0;
    io >> label >> value;
    if (label != "rchar:") throw std::runtime_error("the kernel does not count what is read");
    return value;
}

}  // namespace kovra::helper
