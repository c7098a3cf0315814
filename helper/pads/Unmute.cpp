#include "helper/pads/Unmute.h"

#include <algorithm>
#include <set>
#include <thread>

#include "helper/Backoff.h"
#include "helper/Log.h"

namespace kovra::helper {

bool unmute(const std::string& name, MutedPads& mutedPads, const InhibitedAttribute& attribute) {
    // A device that is not inhibited needs no write, which its driver or a read-only /sys might refuse.
    const int error = attribute.isInhibited(name) == false ? 0 : attribute.setInhibited(name, false);
    if (error != 0 && !attribute.meansGone(error)) {
        logError(name + " cannot be unmuted yet", error);
        return false;
    }
    mutedPads.remove(name);
    return true;
}

bool unmuteAll(MutedPads& mutedPads, const InhibitedAttribute& attribute, std::chrono::milliseconds timeout) {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    Backoff backoff;
    while (true) {
        const std::set<std::string> names = mutedPads.names();
        for (const std::string& name : names) unmute(name, mutedPads, attribute);
        if (mutedPads.names().empty()) return true;
        const auto left = deadline - std::chrono::steady_clock::now();
        if (left <= std::chrono::nanoseconds::zero()) return false;
        std::this_thread::sleep_for(std::min<std::chrono::nanoseconds>(backoff.nextDelay(), left));
    }
}

}  // namespace kovra::helper
