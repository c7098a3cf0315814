#include "helper/ClockWatch.h"

#include <sys/timerfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <ctime>
#include <limits>
#include <system_error>
#include <utility>

namespace kovra::helper {

ClockWatch::ClockWatch(Loop& loop, std::function<void()> onJump)
    : timer_(::timerfd_create(CLOCK_REALTIME, TFD_NONBLOCK | TFD_CLOEXEC)), onJump_(std::move(onJump)) {
    itimerspec never{};
    never.it_value.tv_sec = std::numeric_limits<std::time_t>::max();
    if (!timer_.isOpen() ||
        ::timerfd_settime(timer_.number(), TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET, &never, nullptr) != 0)
        throw std::system_error(errno, std::generic_category(), "clock");
    watch_ = loop.onReadable(timer_.number(), [this] { readTimer(); });
}

void ClockWatch::readTimer() {
    std::uint64_t expirations = 0;
    if (::read(timer_.number(), &expirations, sizeof expirations) < 0 && errno == ECANCELED) onJump_();
}

}  // namespace kovra::helper
