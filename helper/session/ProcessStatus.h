#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>

#include "helper/BootTime.h"

namespace kovra::helper {

// A part of what the kernel states about a process in /proc/PID/status.
struct ProcessStatus {
    std::string name;  // truncated to 15 bytes by the kernel
    pid_t parent = 0;
    uid_t realUser = 0;
    uid_t effectiveUser = 0;
    // How many process namespaces it is in, from that of the caller's /proc down to its own: more than one if it is in
    // a container.
    int pidNamespaces = 1;
};

// Parses the text of /proc/PID/status. Returns nothing if it lacks the name, or a valid number of the parent, the real
// user or the effective user.
std::optional<ProcessStatus> parseProcessStatus(std::string_view text);

// When a process was started, from the text of /proc/PID/stat, to 10 ms. Nothing if the text is damaged, or if that was
// more than 292 years after the boot.
std::optional<BootTime> parseProcessStart(std::string_view text);

// Reads when a process was started. Returns nothing if the process does not exist any more.
std::optional<BootTime> processStart(pid_t process);

// Reads the status of a process. Returns nothing if the process does not exist any more, or if its status cannot be
// read or is longer than 64 KiB.
std::optional<ProcessStatus> processStatus(pid_t process);

}  // namespace kovra::helper
