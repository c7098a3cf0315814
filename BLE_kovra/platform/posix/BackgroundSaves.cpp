#include "BLE_kovra/platform/posix/BackgroundSaves.h"

#include <cerrno>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <utility>

#include "BLE_kovra/platform/posix/SmallThread.h"

namespace kovra {

// The data that the thread shares with its owner. It exists until both have released it.
struct BackgroundSaves::Shared {
    Shared(Save how, Failed whenFailed) : save(std::move(how)), failed(std::move(whenFailed)) {}

    // attempt() and report() do not throw, because an exception would end the process before it has unmuted the
    // trackpad.
    int attempt(const Values& values) const noexcept {
        try {
            return save(values);
        } catch (const std::exception&) {
            return ENOMEM;
        }
    }
    void report(int error) noexcept {
        const std::lock_guard lock(reporting);
        try {
            if (failed) failed(error);
        } catch (const std::exception&) {
            // There is no memory for the report either.
        }
    }

    const Save save;
    std::mutex mutex;
    std::condition_variable finished;
    Values waiting;
    bool isRunning = false;
    // A separate lock, so that begin() does not wait for a slow log.
    std::mutex reporting;
    Failed failed;
};

BackgroundSaves::BackgroundSaves(Save save, Failed failed)
    : shared_(std::make_shared<Shared>(std::move(save), std::move(failed))) {}

BackgroundSaves::~BackgroundSaves() {
    {
        const std::lock_guard lock(shared_->reporting);
        shared_->failed = nullptr;
    }
    if (!thread_) return;
    if (wait({}))
        ::pthread_join(*thread_, nullptr);
    else
        ::pthread_detach(*thread_);
}

void BackgroundSaves::begin(std::string_view key, const PreferenceValue& value) {
    {
        const std::lock_guard lock(shared_->mutex);
        shared_->waiting.insert_or_assign(std::string(key), value);
        if (std::exchange(shared_->isRunning, true)) return;
    }
    if (const auto finished = std::exchange(thread_, std::nullopt)) ::pthread_join(*finished, nullptr);
    thread_ = startSmallThread([shared = shared_] { run(*shared); });
    if (!thread_) run(*shared_);  // no thread could be started, so save here, although it may take time
}

bool BackgroundSaves::wait(std::chrono::nanoseconds atMost) {
    std::unique_lock lock(shared_->mutex);
    return shared_->finished.wait_for(lock, atMost, [this] { return !shared_->isRunning; });
}

void BackgroundSaves::run(Shared& shared) {
    std::unique_lock lock(shared.mutex);
    while (!shared.waiting.empty()) {
        const Values values = std::exchange(shared.waiting, {});
        lock.unlock();
        const int error = shared.attempt(values);
        if (error != 0) shared.report(error);
        lock.lock();
    }
    shared.isRunning = false;
    shared.finished.notify_all();
}

}  // namespace kovra
