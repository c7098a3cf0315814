#include "helper/ClockWatch.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>

#include "tests/helper/RunUntil.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra::helper {
namespace {

// Returns the number of this process's real-time timer descriptors that the kernel cancels when the clock is set.
int cancelableTimers() {
    int found = 0;
    for (const auto& descriptor : std::filesystem::directory_iterator("/proc/self/fdinfo")) {
        const std::string text = readFile(descriptor.path());
        const bool isRealTime = text.find("\nclockid: 0\n") != std::string::npos;
        // TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET
        if (isRealTime && text.find("\nsettime flags: 03\n") != std::string::npos) ++found;
    }
    return found;
}

// This test must not set the clock of its machine, so it inspects the timer. The scenario clock_set in
// tests/system/laptop sets the clock of a virtual machine.
TEST(ClockWatchTest, HasATimerThatTheKernelCancelsWhenTheClockIsSetAndThatDoesNotExpire) {
    Loop loop;
    ASSERT_EQ(cancelableTimers(), 0);
    int jumps = 0;
    const ClockWatch watch(loop, [&] { ++jumps; });
    EXPECT_EQ(cancelableTimers(), 1);
    runFor(loop, std::chrono::milliseconds(20));
    EXPECT_EQ(jumps, 0);
}

}  // namespace
}  // namespace kovra::helper
