#include "BLE_kovra/platform/macos/loop/DispatchMainQueue.h"

#include <dispatch/dispatch.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <system_error>
#include <utility>

namespace kovra {

struct DispatchMainQueue::State {
    bool isStopped = false;
};

namespace {

// A block that waits for its time. It keeps itself alive until it has run or is cancelled.
//
// The timer is strict and without leeway. Otherwise the system may delay it by a tenth of its delay, and by much more
// while it considers the program idle. There is no timer while nothing waits.
class Delayed {
  public:
    static std::shared_ptr<Delayed> start(std::chrono::nanoseconds delay, MainQueue::Block block) {
        const auto delayed = std::make_shared<Delayed>();
        delayed->source_ =
            ::dispatch_source_create(DISPATCH_SOURCE_TYPE_TIMER, 0, DISPATCH_TIMER_STRICT, ::dispatch_get_main_queue());
        if (delayed->source_ == nullptr) throw std::system_error(ENOMEM, std::generic_category(), "timer");
        delayed->block_ = std::move(block);
        delayed->itself_ = delayed;
        const ::dispatch_time_t due = ::dispatch_time(DISPATCH_TIME_NOW, std::max<std::int64_t>(delay.count(), 0));
        ::dispatch_set_context(delayed->source_, delayed.get());
        ::dispatch_source_set_event_handler_f(delayed->source_, isDue);
        ::dispatch_source_set_timer(delayed->source_, due, DISPATCH_TIME_FOREVER, 0);
        ::dispatch_resume(delayed->source_);
        return delayed;
    }

    // Returns the block, which waits no longer. Returns null if it has run or was cancelled.
    MainQueue::Block end() {
        const auto itself = std::move(itself_);
        if (itself == nullptr) return nullptr;
        ::dispatch_source_cancel(source_);
        ::dispatch_release(source_);
        return std::exchange(block_, nullptr);
    }

  private:
    static void isDue(void* context) noexcept {
        if (context == nullptr) return;
        if (const MainQueue::Block block = static_cast<Delayed*>(context)->end()) block();
    }

    ::dispatch_source_t source_ = nullptr;
    MainQueue::Block block_;
    std::shared_ptr<Delayed> itself_;
};

class Task : public DelayedTask {
  public:
    explicit Task(std::shared_ptr<Delayed> delayed) : delayed_(std::move(delayed)) {}
    void cancel() override {
        if (const auto delayed = std::exchange(delayed_, nullptr)) delayed->end();
    }

  private:
    std::shared_ptr<Delayed> delayed_;  // null if nothing waits
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
    if (isStopped()) return std::make_unique<Task>(nullptr);
    return std::make_unique<Task>(Delayed::start(delay, [state = state_, block = std::move(block)] {
        if (!state->isStopped) block();
    }));
}

void DispatchMainQueue::stop() { state_->isStopped = true; }

bool DispatchMainQueue::isStopped() const { return state_->isStopped; }

}  // namespace kovra
