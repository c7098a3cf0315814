#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <memory>

#include "helper/Descriptor.h"
#include "helper/Loop.h"

namespace kovra::helper {

// Whether the application of a user lives: a process named "ble-kovra" whose real and effective user is that one.
//
// One such process is held by its pidfd, so that its end is known at once and its number cannot come to mean another.
// The list of processes is read only when it is asked and none of that user is held, or the held one has ended. A
// program that the application has started, and that is about to become another one, is not held; once the application
// has ended it is held until it has become that other one, which is looked for after 0.1, 1 and 10 s.
class ApplicationWatch {
  public:
    explicit ApplicationWatch(Loop& loop) : loop_(loop) {}

    // Also holds the process that it finds. A process that is stopped, or has not been asked for anything, lives.
    bool lives(uid_t user);
    // Lets go of it; onEnd is not called until lives() has said yes again.
    void forget();

    // Called when the held process has ended and no other one of that user is found, within the same moment; or when
    // the other one turns out to have been none.
    std::function<void()> onEnd;

  private:
    bool hold(uid_t user);
    void ended();
    void lookAgainAfter(std::chrono::milliseconds pause);

    Loop& loop_;
    uid_t user_ = 0;
    pid_t number_ = 0;
    Descriptor process_;
    std::unique_ptr<Loop::Watch> watch_;
    std::unique_ptr<Loop::Watch> again_;
};

}  // namespace kovra::helper
