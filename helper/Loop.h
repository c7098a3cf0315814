#pragma once

#include <systemd/sd-event.h>

#include <chrono>
#include <functional>
#include <memory>

#include "helper/Handles.h"

namespace kovra::helper {

// The daemon's event loop, on sd-event: one thread, asleep without a tick while nothing happens.
//
// sd-event's callbacks only ring. What they ring for runs right after, outside sd-event's dispatch, one piece of work
// at a time; so it may let go of its own Watch, and of any other, which then rings no more. An exception that leaves a
// piece of work leaves run().
class Loop {
  public:
    using Work = std::function<void()>;

    // Throws std::system_error where the system has no descriptor left for it.
    Loop();
    Loop(const Loop&) = delete;
    Loop& operator=(const Loop&) = delete;
    ~Loop();

    // What is watched, until it is let go of. Must not outlive the loop.
    class Watch {
      public:
        Watch() = default;
        Watch(const Watch&) = delete;
        Watch& operator=(const Watch&) = delete;
        virtual ~Watch() = default;
    };

    // Rings for as long as there is something to read, a hang-up or an error, and so until the work has dealt with it.
    // A pidfd is readable once its process has ended, a timerfd once it is due or cancelled. The descriptor stays the
    // caller's and must stay open as long as the watch. All three throw std::system_error as the constructor does.
    std::unique_ptr<Watch> onReadable(int descriptor, Work work);
    // Once, not before the delay is over and within microseconds of it.
    std::unique_ptr<Watch> after(std::chrono::milliseconds delay, Work work);
    // The signal is blocked from here on, and stays so.
    std::unique_ptr<Watch> onSignal(int number, Work work);

    // Turns until stop(), whoever calls it.
    void run();
    // From a piece of work: no other one runs, and run() returns.
    void stop() { stopped_ = true; }

  private:
    class Source;

    Handle<sd_event, sd_event_unref> event_;
    std::shared_ptr<Work> rung_;  // sd-event rings for one thing in each of its turns
    bool stopped_ = false;
};

}  // namespace kovra::helper
