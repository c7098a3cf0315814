#pragma once

#include <systemd/sd-event.h>

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <unordered_map>
#include <utility>

#include "BLE_kovra/platform/MainQueue.h"
#include "BLE_kovra/platform/linux/loop/Handles.h"
#include "BLE_kovra/platform/linux/loop/Listeners.h"
#include "BLE_kovra/platform/posix/DescriptorLoop.h"

namespace kovra {

using EventSource = Handle<sd_event_source, sd_event_source_disable_unref>;

// The event loop of the resident program, and the main queue on top of it.
//
// Callbacks of sd-event do not call the application; they queue blocks. Blocks run outside sd-event's dispatch, so that
// a block may run the loop nested. While nothing happens the process sleeps in the kernel, without periodic wake-ups.
class SdEventLoop : public MainQueue, public DescriptorLoop {
  public:
    // Throws std::system_error if the system has no descriptors left for the loop.
    SdEventLoop();
    ~SdEventLoop() override;

    void async(Block block) override;
    std::unique_ptr<DelayedTask> asyncAfter(std::chrono::nanoseconds delay, Block block) override;

    // Returns the loop of sd-event, to which an adapter attaches a library. The callbacks of that library must not call
    // the application, but queue blocks.
    sd_event* event() const { return event_.get(); }

    std::unique_ptr<Watch> watch(int descriptor, Block readable) override;
    // Runs `writable` when the descriptor accepts data again. The same descriptor may also be watched for reading.
    std::unique_ptr<Watch> watchWritable(int descriptor, Block writable);

    // Calls `work` in each turn, after the events and before the queued blocks, for as long as the token lives. Like a
    // callback of sd-event, it must not call the application.
    [[nodiscard]] Listeners<>::Token afterEvents(Block work) { return afterEvents_.add(std::move(work)); }

    // A signal that is handled for as long as this object lives. Its block is put at the head of the queue, in place of
    // the signal's usual effect. A signal that was ignored when the process started, as for a shell's background job,
    // is handled too. The signal stays blocked after this object is destroyed.
    class Signal {
      public:
        virtual ~Signal() = default;
    };
    std::unique_ptr<Signal> onSignal(int number, Block block);

    // Runs until stop().
    void run();
    void runUntil(const std::function<bool()>& done) override;
    // Drops all queued blocks. From now on no block runs or can be queued, and run() returns.
    void stop();
    bool isStopped() const override { return stopped_; }

  private:
    class Timer;
    class Task;
    class DescriptorWatch;
    class WritableWatch;
    class SignalSource;

    // Waits for an event unless blocks are queued, then runs the blocks that are queued at that time.
    void turn();

    Handle<sd_event, sd_event_unref> event_;
    Listeners<> afterEvents_;
    std::deque<Block> blocks_;
    std::unordered_map<Timer*, std::shared_ptr<Timer>> timers_;  // those that are not due yet
    bool stopped_ = false;
};

}  // namespace kovra
