#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

#include "helper/BootTime.h"
#include "helper/Descriptor.h"
#include "helper/Loop.h"
#include "helper/RateLimit.h"

namespace kovra::helper {

// A watch of whether a user's application is running (see applicationOf()).
//
// It holds a pidfd of one process of the application. It is therefore notified at once when that process ends, and does
// not mistake another process that reuses the ID for it. All processes are searched only by startOf(), and only if no
// running application of the user is held. The end of the held process is reported without a search: with thousands of
// processes a search takes seconds, and the touchpad must be unmuted before that.
//
// A child of the application that is about to execute another program still has the application's name. The child is
// not held while its parent is running. If the parent was killed, the child is held. Because there is no notification
// of an exec, a process that is held after the end of another one is checked again up to three times: after 0.1 s, then
// after 1 s more, and then after 10 s more.
//
// A search reads files of every process, and the user can cause one by writing the flag whenever no application is
// running. So there are at most five searches in a row and then two a second. A search that is put off takes place
// within half a second.
class ApplicationWatch {
  public:
    // The first of the three checks takes place after this time. Only tests change it.
    explicit ApplicationWatch(Loop& loop, std::chrono::milliseconds firstCheck = std::chrono::milliseconds(100))
        : loop_(loop), firstCheck_(firstCheck) {}

    // Returns when the process that is held was started, if it is this user's application and still running. Otherwise
    // stops watching it and returns nothing. Never searches.
    std::optional<BootTime> heldStartOf(uid_t user);
    // Returns when the user's running application was started, and starts watching its process. A stopped process, or
    // one that does not respond, counts as running. If there are several, it is the one that was started first. Returns
    // nothing if none is running or the search is put off.
    std::optional<BootTime> startOf(uid_t user);
    // Stops watching. onChange is not called until startOf() is called again.
    void release();

    // Called when the watched process has ended. Also called when a later check rules out a process that only looked
    // like the application, and when a search that was put off has found the application.
    std::function<void()> onChange;

  private:
    bool search(uid_t user);
    bool watchProcessOf(uid_t user);
    void processEnded();
    void dropProcess();
    void recheckAfter(std::chrono::milliseconds delay);

    Loop& loop_;
    const std::chrono::milliseconds firstCheck_;
    uid_t user_ = 0;
    pid_t pid_ = 0;
    BootTime start_{0};
    Descriptor pidfd_;
    std::unique_ptr<Loop::Watch> watch_;
    std::unique_ptr<Loop::Watch> recheck_;
    bool hasLostProcess_ = false;  // so that the next one that is held is checked again
    RateLimit searches_{5, std::chrono::milliseconds(500)};
    std::unique_ptr<Loop::Watch> laterSearch_;
};

}  // namespace kovra::helper
