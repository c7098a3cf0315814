#pragma once

#include <sys/types.h>

namespace kovra {

// A descriptor that becomes, and stays, readable once this child process has ended, at once where it has ended already.
// It may do so an instant before the process can be waited for. -1 where the system has none left, with errno.
int openProcessEnd(pid_t process);

}  // namespace kovra
