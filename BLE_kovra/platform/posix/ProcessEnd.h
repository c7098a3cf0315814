#pragma once

#include <sys/types.h>

namespace kovra {

// Returns a descriptor that is readable once this child process has ended, perhaps slightly before waitpid(2) succeeds.
// -1 on failure, with errno.
int openProcessEnd(pid_t process);

}  // namespace kovra
