#include "helper/Daemon.h"

#include <utility>

namespace kovra::helper {

Daemon::Daemon(Loop& loop, People people, FlagFolder& flag, Touchpads& touchpads, Muter& muter,
               Pauses untilTheNextHandOver)
    : loop_(loop),
      people_(std::move(people)),
      flag_(flag),
      touchpads_(touchpads),
      muter_(muter),
      clock_(loop, [this] { lookAtEverything(); }),
      untilTheNextHandOver_(untilTheNextHandOver) {
    touchpads_.onChange = [this] { evaluate(); };
    flag_.onChange = [this] { evaluate(); };
    flag_.onLost = [this] { flagIsLost(); };
}

void Daemon::evaluate() {
    if (hasFailed_) return;
    const std::optional<uid_t> user = people_.atTheMachine();
    if (flagIsTheirs(user) && shouldMute(user))
        muter_.muteExactly(touchpads_.inputs());
    else
        muter_.muteExactly({});
}

// Nobody's touchpad waits for a hand-over: what the one before had muted is given back first. What one that fails does
// in the folder is told of like all else there, and must not lead to the next one.
bool Daemon::flagIsTheirs(std::optional<uid_t> user) {
    const bool isTheirs = flag_.isOf(user);
    if (!isTheirs && handOverAgain_ && refused_ == user) return false;
    handOverAgain_.reset();
    if (!isTheirs) muter_.muteExactly({});
    if (isTheirs || flag_.handOver(user)) {
        untilTheNextHandOver_.startAnew();
        return true;
    }
    if (refused_ != user) untilTheNextHandOver_.startAnew();
    refused_ = user;
    handOverAgain_ = loop_.after(untilTheNextHandOver_.next(), [this] {
        handOverAgain_.reset();
        evaluate();
    });
    return false;
}

// The application is looked for before the flag says "on", since looking through all processes takes its time.
bool Daemon::shouldMute(std::optional<uid_t> user) {
    if (user) return people_.runsTheApplication(*user) && flag_.saysOn();
    people_.forgetTheApplication();
    return false;
}

void Daemon::lookAtEverything() {
    touchpads_.look();
    evaluate();
}

void Daemon::flagIsLost() {
    hasFailed_ = true;
    muter_.muteExactly({});
    loop_.stop();
}

}  // namespace kovra::helper
