#include "helper/pads/GiveBack.h"

#include <algorithm>
#include <set>
#include <thread>
#include <utility>

#include "helper/Log.h"

namespace kovra::helper {

std::chrono::milliseconds Pauses::next() { return std::exchange(next_, std::min(2 * next_, longest_)); }

bool giveBack(const std::string& name, Records& records, const InputClass& inputs) {
    // What is heard already needs no driver's consent, nor a kernel that lets anybody write.
    const int error = inputs.isInhibited(name) == false ? 0 : inputs.setInhibited(name, false);
    if (error != 0 && !inputs.saysGone(error)) {
        logError(name + " cannot be given back yet", error);
        return false;
    }
    records.remove(name);
    return true;
}

bool giveBackAll(Records& records, const InputClass& inputs, std::chrono::milliseconds atMost) {
    const auto deadline = std::chrono::steady_clock::now() + atMost;
    Pauses pauses;
    while (true) {
        const std::set<std::string> names = records.names();
        for (const std::string& name : names) giveBack(name, records, inputs);
        if (records.names().empty()) return true;
        const auto left = deadline - std::chrono::steady_clock::now();
        if (left <= std::chrono::nanoseconds::zero()) return false;
        std::this_thread::sleep_for(std::min<std::chrono::nanoseconds>(pauses.next(), left));
    }
}

}  // namespace kovra::helper
