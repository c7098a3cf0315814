#include "BLE_kovra/platform/linux/hid/UdevEvents.h"

#include <gtest/gtest.h>
#include <libudev.h>
#include <sys/syscall.h>

#include <cerrno>

#include "tests/support/linux/FailingCalls.h"
#include "tests/support/posix/InAChild.h"

namespace kovra {
namespace {

TEST(UdevEventsTest, AreNotOpenIfTheirSocketCannotListen) {
    const UdevdPaths kernelAlone{.control = "/nonexistent/control", .kernelIsReachable = [] { return true; }};
    const auto isOpen = [&] {
        const Handle<udev, udev_unref> context(udev_new());
        return UdevEvents::open(context.get(), "hid", kernelAlone) != nullptr;
    };
    EXPECT_TRUE(holdsInAChild(isOpen));
    EXPECT_TRUE(holdsInAChild([&] {
        failAt(SYS_bind, {ENOMEM});
        return !isOpen();
    }));
}

}  // namespace
}  // namespace kovra
