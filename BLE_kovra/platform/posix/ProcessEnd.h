#pragma once

#include <sys/types.h>

namespace kovra {

// Returns a descriptor that is readable once this child process has ended, perhaps slightly before waitpid(2) succeeds.
// Returns -1, with errno set, on failure.
int openProcessEnd(pid_t process);

}  // namespace kovra
