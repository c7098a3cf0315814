#include "helper/Daemon.h"

#include <utility>

namespace kovra::helper {

Daemon::Daemon(Loop& loop, Session session, FlagFolder& flag, Touchpads& touchpads, Muter& muter,
               Backoff handOverBackoff, RateLimit handOvers)
    : loop_(loop),
      session_(std::move(session)),
      flag_(flag),
      touchpads_(touchpads),
      muter_(muter),
      clock_(loop, [this] { rescan(); }),
      handOverBackoff_(handOverBackoff),
      handOvers_(handOvers) {
    touchpads_.onChange = [this] { evaluate(); };
    // A disk that becomes read-only causes no event, and the application can then no longer write "off". So the flag is
    // checked at each event of an input device, such as the removal of the mouse.
    touchpads_.onEvent = [this] { evaluate(); };
    flag_.onChange = [this] { evaluate(); };
    flag_.onLost = [this] { handleLostFlag(); };
}

void Daemon::evaluate() {
    if (hasFailed_) return;
    const std::optional<uid_t> user = session_.activeUser();
    if (ensureFlagOf(user) && shouldMute(user))
        muter_.muteOnly(touchpads_.inputs());
    else
        muter_.muteOnly({});
}

// Hands the flag over to this user, or to no user, unless the flag is already that user's. Returns whether it is now.
// Unmutes all pads before a hand-over, because a hand-over takes time. A failed hand-over changes files in the folder,
// and so causes further calls for the same user. While the retry is scheduled, these calls do not hand over again.
bool Daemon::ensureFlagOf(std::optional<uid_t> user) {
    const bool hasFlag = flag_.isFlagOf(user);
    if (!hasFlag && handOverRetry_ && handOverFailedFor_ == user) return false;
    handOverRetry_.reset();
    if (!hasFlag) muter_.muteOnly({});
    if (!hasFlag && isHandOverPutOff()) return false;
    if (hasFlag || flag_.handOver(user)) {
        handOverBackoff_.reset();
        return true;
    }
    if (handOverFailedFor_ != user) handOverBackoff_.reset();
    handOverFailedFor_ = user;
    evaluateAfter(handOverBackoff_.nextDelay());
    return false;
}

// Counts a hand-over, or schedules one if the limit does not permit it now. Returns whether it is put off.
bool Daemon::isHandOverPutOff() {
    const auto now = RateLimit::Clock::now();
    const auto delay = handOvers_.delay(now);
    if (delay > std::chrono::milliseconds(0)) {
        evaluateAfter(delay);
        return true;
    }
    handOvers_.use(now);
    return false;
}

void Daemon::evaluateAfter(std::chrono::milliseconds delay) {
    handOverRetry_ = loop_.after(delay, [this] {
        handOverRetry_.reset();
        evaluate();
    });
}

// Searches for the application even while the flag says "off". The search takes milliseconds, and muting would have to
// wait for it after the flag has changed to "on". Unmutes all pads before a search, because any account can make it
// take seconds by starting thousands of processes.
bool Daemon::shouldMute(std::optional<uid_t> user) {
    if (!user) {
        session_.releaseApplication();
        return false;
    }
    auto start = session_.heldApplicationStart(*user);
    if (!start) {
        muter_.muteOnly({});
        start = session_.applicationStart(*user);
    }
    return start && flag_.isOn(*start);
}

void Daemon::rescan() {
    touchpads_.rescan();
    evaluate();
}

void Daemon::handleLostFlag() {
    hasFailed_ = true;
    muter_.muteOnly({});
    loop_.stop();
}

}  // namespace kovra::helper
