#pragma once

#include <pthread.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace kovra {

// Makes calls in a thread, one at a time, so that the caller need not wait for one that hangs. A thread runs only while
// there is a call.
class TimeLimitedCalls {
  public:
    TimeLimitedCalls();
    // Does not wait for a call that hangs. It continues until it returns or the process ends.
    ~TimeLimitedCalls();
    TimeLimitedCalls(const TimeLimitedCalls&) = delete;
    TimeLimitedCalls& operator=(const TimeLimitedCalls&) = delete;

    // Makes the call, and waits for it no longer than `atMost`. Returns whether the call has returned. Otherwise it
    // continues, or has thrown an exception, or was not made because an earlier call has not returned yet or no thread
    // can be started. The call must own what it uses.
    bool make(std::function<void()> call, std::chrono::nanoseconds atMost);

  private:
    struct Shared;

    bool hasReturnedWithin(std::chrono::nanoseconds atMost);

    std::shared_ptr<Shared> shared_;
    std::optional<pthread_t> thread_;  // it runs, or it has finished and is not joined yet
};

}  // namespace kovra
