#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <string_view>

namespace floors {

// Changes the flag in place with the fewest system calls. A reader never finds an existing flag empty.
inline void writeFlag(const char* path, bool on) {
    const std::string_view text = on ? "on" : "off";
    const auto length = static_cast<off_t>(text.size());
    const int file = ::open(path, O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
    const bool written =
        file >= 0 && ::pwrite(file, text.data(), text.size(), 0) == length && ::ftruncate(file, length) == 0;
    if (!written || ::close(file) != 0) std::perror(path);
}

}  // namespace floors
