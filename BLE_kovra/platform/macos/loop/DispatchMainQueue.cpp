#include "BLE_kovra/platform/macos/loop/DispatchMainQueue.h"

#include <dispatch/dispatch.h>

#include <algorithm>
#include <cstdint>
#include <utility>

namespace kovra {

struct DispatchMainQueue::State {
    bool isStopped = false;
};

namespace {

class Task : public DelayedTask {
  public:
    explicit Task(std::shared_ptr<bool> isCancelled) : isCancelled_(std::move(isCancelled)) {}
    void cancel() override { *isCancelled_ = true; }

  private:
    std::shared_ptr<bool> isCancelled_;
};

// The system calls this function once for each context and does not use the context afterwards. No exception may escape
// from this function.
void run(void* context) noexcept {
    const std::unique_ptr<MainQueue::Block> block(static_cast<MainQueue::Block*>(context));
    if (block) (*block)();
}

}  // namespace

DispatchMainQueue::DispatchMainQueue() : state_(std::make_shared<State>()) {}

DispatchMainQueue::~DispatchMainQueue() { stop(); }

void DispatchMainQueue::async(Block block) {
    if (isStopped()) return;
    auto context = std::make_unique<Block>([state = state_, block = std::move(block)] {
        if (!state->isStopped) block();
    });
    ::dispatch_async_f(::dispatch_get_main_queue(), context.release(), run);
}

std::unique_ptr<DelayedTask> DispatchMainQueue::asyncAfter(std::chrono::nanoseconds delay, Block block) {
    auto isCancelled = std::make_shared<bool>(isStopped());
    if (!isStopped()) {
        auto context = std::make_unique<Block>([state = state_, isCancelled, block = std::move(block)] {
            if (!state->isStopped && !*isCancelled) block();
        });
        const ::dispatch_time_t due = ::dispatch_time(DISPATCH_TIME_NOW, std::max<std::int64_t>(delay.count(), 0));
        ::dispatch_after_f(due, ::dispatch_get_main_queue(), context.release(), run);
    }
    return std::make_unique<Task>(std::move(isCancelled));
}

void DispatchMainQueue::stop() { state_->isStopped = true; }

bool DispatchMainQueue::isStopped() const { return state_->isStopped; }

}  // namespace kovra
