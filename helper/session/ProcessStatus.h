#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>

namespace kovra::helper {

// What the kernel tells everybody about a process.
struct ProcessStatus {
    std::string name;  // cut to 15 bytes by the kernel
    pid_t parent = 0;
    uid_t realUser = 0;
    uid_t effectiveUser = 0;
};

// Of the text of /proc/PID/status; empty where it does not name all of them.
std::optional<ProcessStatus> parseProcessStatus(std::string_view text);

// Empty where there is no such process any more.
std::optional<ProcessStatus> processStatus(pid_t process);

}  // namespace kovra::helper
