#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <memory>

#include "helper/Descriptor.h"
#include "helper/Loop.h"

namespace kovra::helper {

// Tells whether a user's application is running: a process named "ble-kovra" whose real and effective user is this
// user.
//
// It holds a pidfd of one such process. It is therefore notified at once when that process ends, and does not mistake a
// process that reuses its ID for it. All processes are searched only if no running process of this user is held.
//
// A child of the application that is about to execute another program still has the application's name. The child is
// not held while its parent is running. If the parent was killed, the child is held. Because there is no notification
// of an exec, the child is then checked again after 0.1, 1 and 10 s.
class ApplicationWatch {
  public:
    explicit ApplicationWatch(Loop& loop) : loop_(loop) {}

    // Returns whether the application is running, and starts watching its process. A stopped process, or one that does
    // not respond, counts as running.
    bool isRunning(uid_t user);
    // Stops watching. onEnd is not called until isRunning() has returned true again.
    void release();

    // Called when the watched process has ended and no other process of the user looks like the application. A process
    // that only looks like the application is ruled out by a later check, which then calls onEnd.
    std::function<void()> onEnd;

  private:
    bool watchProcessOf(uid_t user);
    void processEnded();
    void recheckAfter(std::chrono::milliseconds delay);

    Loop& loop_;
    uid_t user_ = 0;
    pid_t pid_ = 0;
    Descriptor pidfd_;
    std::unique_ptr<Loop::Watch> watch_;
    std::unique_ptr<Loop::Watch> recheck_;
};

}  // namespace kovra::helper
