#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

#include "helper/Backoff.h"
#include "helper/BootTime.h"
#include "helper/ClockWatch.h"
#include "helper/Loop.h"
#include "helper/RateLimit.h"
#include "helper/flag/FlagFolder.h"
#include "helper/pads/Muter.h"
#include "helper/pads/Touchpads.h"

namespace kovra::helper {

// Mutes the touchpads while all of these conditions hold: a user is at the machine, that user's application is running,
// and the flag belongs to that user and says "on" since that application was started.
class Daemon {
  public:
    // The daemon's access to the login manager and to the list of processes.
    struct Session {
        std::function<std::optional<uid_t>()> activeUser;
        // When the user's application was started, if its process is known and still running. Answers at once.
        std::function<std::optional<BootTime>(uid_t)> heldApplicationStart;
        // The same, after a search of all processes if necessary. Nothing if it is not running.
        std::function<std::optional<BootTime>(uid_t)> applicationStart;
        std::function<void()> releaseApplication;  // stops watching the application's process
    };

    // A failed hand-over is retried after these delays, but at once when another user is at the machine. No more
    // hand-overs are tried than the limit permits, since a process may switch between terminals without end. Nothing is
    // muted while a hand-over is put off.
    Daemon(Loop& loop, Session session, FlagFolder& flag, Touchpads& touchpads, Muter& muter,
           Backoff handOverBackoff = Backoff(std::chrono::seconds(2), std::chrono::minutes(5)),
           RateLimit handOvers = RateLimit(10, std::chrono::milliseconds(500)));

    // Checks all conditions, and mutes or unmutes the touchpads. The owner of this object calls it when the user at the
    // machine or the application has changed. The daemon itself calls it for all other changes.
    void evaluate();

    // Whether the daemon has stopped the loop because it has lost the flag's folder.
    bool hasFailed() const { return hasFailed_; }

  private:
    bool ensureFlagOf(std::optional<uid_t> user);
    bool isHandOverPutOff();
    void evaluateAfter(std::chrono::milliseconds delay);
    bool shouldMute(std::optional<uid_t> user);
    void rescan();
    void handleLostFlag();

    Loop& loop_;
    Session session_;
    FlagFolder& flag_;
    Touchpads& touchpads_;
    Muter& muter_;
    ClockWatch clock_;
    Backoff handOverBackoff_;
    RateLimit handOvers_;
    std::optional<uid_t> handOverFailedFor_;      // the user of the last hand-over that failed
    std::unique_ptr<Loop::Watch> handOverRetry_;  // of a hand-over that failed or was put off
    bool hasFailed_ = false;
};

}  // namespace kovra::helper
