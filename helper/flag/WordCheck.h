#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <utility>

#include "helper/BootTime.h"

namespace kovra::helper {

// The real-time clock's time at boot, as that clock is set now. Never later than it really is.
std::chrono::nanoseconds realTimeAtBoot();

// Decides whether the flag was written since an application was started. Otherwise an earlier application that was
// killed has left the word.
//
// The kernel notes the time of a write by the real-time clock, and the start of a process since boot. They are compared
// by the present difference of the two clocks. Setting the clock later does not change an answer: it stays until the
// flag or the application changes.
class WordCheck {
  public:
    explicit WordCheck(std::function<std::chrono::nanoseconds()> timeAtBoot = realTimeAtBoot)
        : timeAtBoot_(std::move(timeAtBoot)) {}

    // A file, and when it was last written by the real-time clock.
    struct Version {
        ino_t inode = 0;
        std::chrono::nanoseconds written{0};
        bool operator==(const Version&) const = default;
    };
    bool isWrittenSince(BootTime start, const Version& version);

  private:
    const std::function<std::chrono::nanoseconds()> timeAtBoot_;
    BootTime start_{-1};  // no application starts before boot, so the first call is never answered from memory
    Version version_;
    bool answer_ = false;
};

}  // namespace kovra::helper
