#include "BLE_kovra/platform/posix/BackgroundSaves.h"

#include <cerrno>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <system_error>
#include <utility>

namespace kovra {

// What the thread shares with its owner. It outlives both.
struct BackgroundSaves::Shared {
    Shared(Save how, Failed report) : save(std::move(how)), failed(std::move(report)) {}

    const Save save;
    std::mutex mutex;
    std::condition_variable finished;
    Values waiting;
    bool isRunning = false;
    // A lock of its own, so that nobody waits for a slow log to begin a save.
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
    if (!thread_.joinable()) return;
    if (wait({}))
        thread_.join();
    else
        thread_.detach();
}

void BackgroundSaves::begin(std::string_view key, const PreferenceValue& value) {
    {
        const std::lock_guard lock(shared_->mutex);
        shared_->waiting.insert_or_assign(std::string(key), value);
        if (std::exchange(shared_->isRunning, true)) return;
    }
    if (thread_.joinable()) thread_.join();  // it has finished
    try {
        thread_ = std::thread([shared = shared_] { run(shared); });
    } catch (const std::system_error&) {
        run(shared_);  // no more threads: better late than never
    }
}

bool BackgroundSaves::wait(std::chrono::nanoseconds atMost) {
    std::unique_lock lock(shared_->mutex);
    return shared_->finished.wait_for(lock, atMost, [this] { return !shared_->isRunning; });
}

void BackgroundSaves::run(const std::shared_ptr<Shared>& shared) {
    std::unique_lock lock(shared->mutex);
    while (!shared->waiting.empty()) {
        const Values values = std::exchange(shared->waiting, {});
        lock.unlock();
        int error = 0;
        try {
            error = shared->save(values);
        } catch (const std::exception&) {
            error = ENOMEM;
        }
        if (error != 0) {
            const std::lock_guard reporting(shared->reporting);
            if (shared->failed) shared->failed(error);
        }
        lock.lock();
    }
    shared->isRunning = false;
    shared->finished.notify_all();
}

}  // namespace kovra
