#include "helper/flag/WordCheck.h"

#include <ctime>

namespace kovra::helper {

namespace {

using namespace std::chrono_literals;

std::chrono::nanoseconds timeOf(clockid_t clock) {
    timespec time{};
    ::clock_gettime(clock, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

// How much earlier than the write the noted time may be. The kernel notes the time of its last tick, which is up to
// 10 ms old. A file system may keep whole seconds only.
std::chrono::nanoseconds rounding(std::chrono::nanoseconds written) {
    return written % 1s == 0s ? 1s + 10ms : std::chrono::nanoseconds(10ms);
}

}  // namespace

std::chrono::nanoseconds realTimeAtBoot() {
    const auto real = timeOf(CLOCK_REALTIME);  // first, since a pause between both makes the result earlier
    return real - timeOf(CLOCK_BOOTTIME);
}

bool WordCheck::isWrittenSince(BootTime start, const Version& version) {
    if (start == start_ && version == version_) return answer_;
    start_ = start;
    version_ = version;
    answer_ = version.written + rounding(version.written) >= timeAtBoot_() + start;
    return answer_;
}

}  // namespace kovra::helper
