#include "BLE_kovra/platform/linux/hid/KernelEvents.h"

#include <gtest/gtest.h>
#include <sched.h>

#include "BLE_kovra/platform/posix/Path.h"
#include "tests/support/posix/InAChild.h"

namespace kovra {
namespace {

TEST(KernelEventsTest, ArriveOnlyInANetworkOfTheMachineItself) {
    const bool isInAContainer = linkTarget("/proc/self/ns/user") != "user:[4026531837]";
    EXPECT_TRUE(kernelEventsArrive() || isInAContainer);
    EXPECT_TRUE(holdsInAChild([] { return ::unshare(CLONE_NEWUSER | CLONE_NEWNET) == 0 && !kernelEventsArrive(); }));
}

}  // namespace
}  // namespace kovra
