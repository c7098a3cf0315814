#pragma once

#include <systemd/sd-event.h>

#include <chrono>
#include <functional>
#include <memory>

#include "helper/Handles.h"

namespace kovra::helper {

// The daemon's event loop, on top of sd-event. It has one thread, and does not wake up while nothing happens.
//
// The callbacks of sd-event only note which work is ready. The loop then runs that work outside sd-event's dispatch,
// one piece at a time. Work may therefore destroy any Watch, including its own; work whose Watch was destroyed does not
// run again. An exception thrown by work propagates out of run().
class Loop {
  public:
    using Work = std::function<void()>;

    // Throws std::system_error if sd-event fails, for example because no file descriptor is left.
    Loop();
    Loop(const Loop&) = delete;
    Loop& operator=(const Loop&) = delete;
    ~Loop();

    // An event source. Destroying this object removes it from the loop, and the loop must outlive it.
    class Watch {
      public:
        Watch() = default;
        Watch(const Watch&) = delete;
        Watch& operator=(const Watch&) = delete;
        virtual ~Watch() = default;
    };

    // Runs the work again and again while the descriptor is readable, hung up or in error. A pidfd is readable once its
    // process has exited, a timerfd once it has expired or was canceled. The caller keeps the descriptor open for as
    // long as the Watch exists. Throws std::system_error like the constructor.
    std::unique_ptr<Watch> onReadable(int descriptor, Work work);
    // Runs the work once, never before the delay is over. Throws like the constructor.
    std::unique_ptr<Watch> after(std::chrono::milliseconds delay, Work work);
    // Runs the work when the signal arrives. The signal is blocked from now on, also after the Watch is destroyed.
    // Throws like the constructor.
    std::unique_ptr<Watch> onSignal(int number, Work work);

    // Waits for events and runs their work until stop() is called. Throws like the constructor.
    void run();
    // Makes run() return as soon as the work that calls this function is done. No other work runs before that.
    void stop() { isStopped_ = true; }

  private:
    class Source;

    Handle<sd_event, sd_event_unref> event_;
    std::shared_ptr<Work> ready_;  // one at most: sd-event dispatches one source in each iteration
    bool isStopped_ = false;
};

}  // namespace kovra::helper
