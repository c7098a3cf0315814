#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <utility>

#include "BLE_kovra/platform/MainQueue.h"

namespace kovra {

// A main queue with a clock that only the test advances.
//
// Blocks run first in, first out. Delayed blocks join the queue when they are due, the earliest first. Blocks with the
// same due time join in the order of their requests.
class FakeMainQueue : public MainQueue {
  public:
    void async(Block block) override {
        if (!stopped_) blocks_.push_back(std::move(block));
    }

    std::unique_ptr<DelayedTask> asyncAfter(std::chrono::nanoseconds delay, Block block) override {
        auto cancelled = std::make_shared<bool>(false);
        if (!stopped_) delayed_.emplace(std::pair(now_ + delay, sequence_++), Delayed{std::move(block), cancelled});
        return std::make_unique<Task>(std::move(cancelled));
    }

    // Runs the blocks that are queued now, not those that they add.
    void runOneTurn() {
        for (std::size_t left = blocks_.size(); left > 0 && !blocks_.empty(); --left) {
            const Block block = std::move(blocks_.front());
            blocks_.pop_front();
            block();
        }
    }

    // Runs turns until nothing more is due.
    void run() {
        collectDue();
        while (!blocks_.empty()) {
            runOneTurn();
            collectDue();
        }
    }

    // Advances the time, and runs each block at the moment when it becomes due.
    void advance(std::chrono::nanoseconds duration) {
        const auto end = now_ + duration;
        run();
        while (!delayed_.empty() && delayed_.begin()->first.first <= end) {
            now_ = delayed_.begin()->first.first;
            run();
        }
        now_ = end;
    }

    // Advances the time without running anything, as when the process is stopped.
    void stall(std::chrono::nanoseconds duration) { now_ += duration; }

    // Drops all blocks and accepts no more, as after the end of the application.
    void stop() {
        stopped_ = true;
        blocks_.clear();
        delayed_.clear();
    }
    // Starts again with an empty queue, as in the next process.
    void restart() {
        stop();
        stopped_ = false;
    }

    std::chrono::nanoseconds now() const { return now_; }
    bool isIdle() const { return blocks_.empty(); }
    std::size_t queued() const { return blocks_.size(); }
    // Returns the number of delayed blocks that have neither run nor been cancelled.
    std::size_t pendingDelayed() const {
        std::size_t count = 0;
        for (const auto& [due, delayed] : delayed_) count += *delayed.cancelled ? 0 : 1;
        return count;
    }

  private:
    struct Delayed {
        Block block;
        std::shared_ptr<bool> cancelled;
    };
    class Task : public DelayedTask {
      public:
        explicit Task(std::shared_ptr<bool> cancelled) : cancelled_(std::move(cancelled)) {}
        void cancel() override { *cancelled_ = true; }

      private:
        std::shared_ptr<bool> cancelled_;
    };

    void collectDue() {
        while (!delayed_.empty() && delayed_.begin()->first.first <= now_) {
            auto next = delayed_.extract(delayed_.begin());
            blocks_.emplace_back([delayed = std::move(next.mapped())] {
                if (!*delayed.cancelled) delayed.block();
            });
        }
    }

    std::deque<Block> blocks_;
    std::map<std::pair<std::chrono::nanoseconds, std::uint64_t>, Delayed> delayed_;
    std::chrono::nanoseconds now_{0};
    std::uint64_t sequence_ = 0;
    bool stopped_ = false;
};

}  // namespace kovra
