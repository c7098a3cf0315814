#include "BLE_kovra/platform/linux/loop/TimeLimitedCalls.h"

#include <condition_variable>
#include <exception>
#include <mutex>
#include <utility>

#include "BLE_kovra/platform/posix/SmallThread.h"

namespace kovra {

// The data that the thread shares with its owner. It exists until both have released it.
struct TimeLimitedCalls::Shared {
    // An exception would end the process before it has unmuted the trackpad.
    void make(const std::function<void()>& call) noexcept {
        bool returned = true;
        try {
            call();
        } catch (const std::exception&) {
            returned = false;
        }
        const std::lock_guard lock(mutex);
        hasReturned = returned;
        isRunning = false;
        finished.notify_all();
    }

    std::mutex mutex;
    std::condition_variable finished;
    bool isRunning = false;
    bool hasReturned = false;  // the last call that has finished, without an exception
};

TimeLimitedCalls::TimeLimitedCalls() : shared_(std::make_shared<Shared>()) {}

TimeLimitedCalls::~TimeLimitedCalls() {
    if (!thread_) return;
    hasReturnedWithin({});
    if (thread_) ::pthread_detach(*thread_);
}

bool TimeLimitedCalls::make(std::function<void()> call, std::chrono::nanoseconds atMost) {
    {
        const std::lock_guard lock(shared_->mutex);
        if (std::exchange(shared_->isRunning, true)) return false;
    }
    if (const auto finished = std::exchange(thread_, std::nullopt)) ::pthread_join(*finished, nullptr);
    thread_ = startSmallThread([shared = shared_, call] { shared->make(call); });
    if (!thread_) {
        const std::lock_guard lock(shared_->mutex);
        shared_->isRunning = false;
        return false;
    }
    return hasReturnedWithin(atMost);
}

// Joins a thread that has finished.
bool TimeLimitedCalls::hasReturnedWithin(std::chrono::nanoseconds atMost) {
    std::unique_lock lock(shared_->mutex);
    if (!shared_->finished.wait_for(lock, atMost, [this] { return !shared_->isRunning; })) return false;
    const bool returned = shared_->hasReturned;
    lock.unlock();
    if (const auto finished = std::exchange(thread_, std::nullopt)) ::pthread_join(*finished, nullptr);
    return returned;
}

}  // namespace kovra
