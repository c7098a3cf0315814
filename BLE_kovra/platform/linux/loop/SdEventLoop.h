#pragma once

#include <systemd/sd-event.h>

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <unordered_map>

#include "BLE_kovra/platform/MainQueue.h"
#include "BLE_kovra/platform/linux/loop/Handles.h"
#include "BLE_kovra/platform/posix/DescriptorLoop.h"

namespace kovra {

using EventSource = Handle<sd_event_source, sd_event_source_disable_unref>;

// The event loop of the resident program, and the main queue on top of it.
//
// sd-event's callbacks only put a block on the queue. Blocks run outside sd-event's own dispatch, so that one of them
// may run the loop nested. Sleeps in the kernel, without a tick, while nothing happens.
class SdEventLoop : public MainQueue, public DescriptorLoop {
  public:
    // Throws std::system_error where the system has no descriptors left for a loop.
    SdEventLoop();
    ~SdEventLoop() override;

    void async(Block block) override;
    std::unique_ptr<DelayedTask> asyncAfter(std::chrono::nanoseconds delay, Block block) override;

    // For adapters that attach a library of their own to the loop. Their callbacks only post.
    sd_event* event() const { return event_.get(); }

    std::unique_ptr<Watch> watch(int descriptor, Block readable) override;
    // For whoever found no room to write. The descriptor may be watched for something to read besides.
    std::unique_ptr<Watch> watchForRoom(int descriptor, Block writable);

    // Takes the signal out of the system's hands for as long as the source lives: its block goes to the head of the
    // queue. Also a signal that the process was started to ignore, as a shell does for what it puts into the
    // background.
    class Signal {
      public:
        virtual ~Signal() = default;
    };
    std::unique_ptr<Signal> onSignal(int number, Block block);

    // Turns until stop().
    void run();
    void runUntil(const std::function<bool()>& done) override;
    // Drops what is queued: from now on no block runs, nothing queues, and run() returns.
    void stop();
    bool isStopped() const override { return stopped_; }

  private:
    class Timer;
    class Task;
    class DescriptorWatch;
    class RoomWatch;
    class SignalSource;

    // Waits for something to happen unless blocks are queued, then runs the blocks queued by then.
    void turn();

    Handle<sd_event, sd_event_unref> event_;
    std::deque<Block> blocks_;
    std::unordered_map<Timer*, std::shared_ptr<Timer>> timers_;  // those that are not due yet
    bool stopped_ = false;
};

}  // namespace kovra
