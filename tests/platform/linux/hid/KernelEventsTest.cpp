#include "BLE_kovra/platform/linux/hid/KernelEvents.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>

#include "BLE_kovra/platform/posix/FileDescriptor.h"
#include "BLE_kovra/platform/posix/Path.h"
#include "tests/support/posix/InAChild.h"

namespace kovra {
namespace {

// Moves this process into a new network of a new namespace of users. Nobody may have such a namespace in a root folder
// (chroot), which root leaves by entering its own namespace of mounts.
bool entersANetworkOfItsOwn() {
    const FileDescriptor mounts(::open("/proc/self/ns/mnt", O_RDONLY | O_CLOEXEC));
    ::setns(mounts.number(), CLONE_NEWNS);
    return ::unshare(CLONE_NEWUSER | CLONE_NEWNET) == 0;
}

TEST(KernelEventsTest, ArriveOnlyInANetworkOfTheMachineItself) {
    const bool isInAContainer = linkTarget("/proc/self/ns/user") != "user:[4026531837]";
    EXPECT_TRUE(kernelEventsArrive() || isInAContainer);
    EXPECT_TRUE(holdsInAChild([] { return entersANetworkOfItsOwn() && !kernelEventsArrive(); }));
}

}  // namespace
}  // namespace kovra
