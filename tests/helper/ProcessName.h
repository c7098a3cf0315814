#pragma once

#include <gtest/gtest.h>
#include <sys/prctl.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <string>

namespace kovra::helper {

// Changes the name of the calling process, as if a program of this name had been started. /proc/PID/cmdline shows the
// memory of the arguments, so this function writes the name there, too.
inline void takeName(const std::string& name) {
    static const std::size_t longest = std::strlen(program_invocation_name);
    ::prctl(PR_SET_NAME, name.c_str());
    ASSERT_LE(name.size(), longest);
    std::memcpy(program_invocation_name, name.c_str(), name.size() + 1);
}

}  // namespace kovra::helper
