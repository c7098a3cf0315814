#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

#include "helper/ClockWatch.h"
#include "helper/Loop.h"
#include "helper/flag/FlagFolder.h"
#include "helper/pads/GiveBack.h"
#include "helper/pads/Muter.h"
#include "helper/pads/Touchpads.h"

namespace kovra::helper {

// Decides when the touchpads are muted: while somebody is at the machine, the flag in place is theirs and says "on",
// and their application lives. Whatever of that fails, in whatever way, means that they are not.
class Daemon {
  public:
    // What is asked of the login manager and of the list of processes.
    struct People {
        std::function<std::optional<uid_t>()> atTheMachine;
        std::function<bool(uid_t)> runsTheApplication;
        std::function<void()> forgetTheApplication;  // until the next question about it
    };

    // A hand-over that failed is tried again after these pauses, and else only for another user.
    Daemon(Loop& loop, People people, FlagFolder& flag, Touchpads& touchpads, Muter& muter,
           Pauses untilTheNextHandOver = Pauses(std::chrono::seconds(2), std::chrono::minutes(5)));

    // Looks at everything it is told of elsewhere, and mutes or gives back. Whoever knows more of the people calls it.
    void evaluate();

    // The loop was stopped because there is no flag any more.
    bool hasFailed() const { return hasFailed_; }

  private:
    bool flagIsTheirs(std::optional<uid_t> user);
    bool shouldMute(std::optional<uid_t> user);
    void lookAtEverything();
    void flagIsLost();

    Loop& loop_;
    People people_;
    FlagFolder& flag_;
    Touchpads& touchpads_;
    Muter& muter_;
    ClockWatch clock_;
    Pauses untilTheNextHandOver_;
    std::optional<uid_t> refused_;  // whose flag is to be handed over again, while that is waited for
    std::unique_ptr<Loop::Watch> handOverAgain_;
    bool hasFailed_ = false;
};

}  // namespace kovra::helper
