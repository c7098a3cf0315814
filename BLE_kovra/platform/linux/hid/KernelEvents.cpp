#include "BLE_kovra/platform/linux/hid/KernelEvents.h"

#include <fcntl.h>
#include <linux/nsfs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

#include "BLE_kovra/platform/posix/FileDescriptor.h"

namespace kovra {

bool kernelEventsArrive() {
    // The same number on each machine: PROC_USER_INIT_INO in the kernel's include/linux/proc_ns.h.
    constexpr ino_t initialUserNamespace = 0xEFFFFFFD;
    const FileDescriptor network(::open("/proc/self/ns/net", O_RDONLY | O_CLOEXEC));
    const FileDescriptor owner(::ioctl(network.number(), NS_GET_USERNS));
    struct stat status{};
    return ::fstat(owner.number(), &status) == 0 && status.st_ino == initialUserNamespace;
}

}  // namespace kovra
