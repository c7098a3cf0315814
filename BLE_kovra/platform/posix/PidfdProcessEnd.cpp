#include <sys/syscall.h>
#include <unistd.h>

#include "BLE_kovra/platform/posix/ProcessEnd.h"

namespace kovra {

int openProcessEnd(pid_t process) { return static_cast<int>(::syscall(SYS_pidfd_open, process, 0)); }

}  // namespace kovra
