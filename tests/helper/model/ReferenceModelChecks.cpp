// The part of the reference model that compares the world with the promises.

#include <algorithm>
#include <string_view>

#include "tests/helper/Users.h"
#include "tests/helper/model/ReferenceModel.h"
#include "tests/helper/model/Source.h"

namespace kovra::helper::model {

using namespace std::chrono_literals;

namespace {

std::string text(Time time) { return std::to_string(time / 1us) + " us"; }

}  // namespace

std::string ReferenceModel::check() {
    update();
    if (!machine_.wrongs.empty()) return machine_.wrongs.front();
    for (const auto& wrong : {checkLife(), checkPads(), checkFlag(), checkLog(), checkSleep()}) {
        if (!wrong.empty()) return wrong;
    }
    return {};
}

// The service manager restarts the helper one second after any end. The helper itself waits for up to 64 s after
// several crashes, and for 10 and 30 s after a failed start.
std::string ReferenceModel::checkLife() {
    const bool isStopped = machine_.daemon() != nullptr && machine_.daemon()->isStopped;
    const bool isExpected = world_.isWanted && !isServing() && !isTroubled_ && !isStopped;
    const Time since = std::max({notServingSince_, world_.startAt, troubleEnded_});
    const bool isOver = isExpected && machine_.now > since + 110s && machine_.now > descriptorsReturned_ + 110s;
    const bool isRefused = std::ranges::any_of(
        machine_.devices, [&](const auto& entry) { return entry.second.refusesToWork && entry.second.isInhibited; });
    return isOver && !isRefused ? "the helper has not served for " + text(machine_.now - since) : "";
}

std::string ReferenceModel::checkPads() {
    for (int shape = 0; shape < static_cast<int>(shapes().size()); ++shape) {
        const Device* device = world_.device(shape);
        if (device == nullptr) continue;
        const bool isMuted = device->isInhibited && device->isInhibitedByHelper;
        Pad& pad = pads_[shape];
        if (isMuted != pad.wasMuted) ++census[isMuted ? "muted" : "unmuted"];
        pad.wasMuted = isMuted;
        if (const std::string wrong = checkPad(shape, isMuted); !wrong.empty())
            return device->name + " (" + device->input + ") " + wrong;
    }
    return {};
}

std::string ReferenceModel::checkPad(int shape, bool isMuted) {
    const Pad& pad = pads_[shape];
    const Time now = machine_.now;
    const Process* daemon = machine_.daemon();
    const Device& device = *world_.device(shape);
    if (isMuted && !pad.may) {
        const Shape& kind = shapes()[static_cast<std::size_t>(shape)];
        if (!kind.isPad && !kind.isTwin) return "is muted, which is no pad";
        // A driver that refuses, or a process without descriptors, can only try again: within five seconds.
        const bool isAwake = isServing() && !daemon->isStopped;
        const Time retry = isAwake ? 5s : 106s;
        if (device.refusesToWork || now <= pad.refusalEnded + retry) return {};
        if (machine_.hasNoDescriptors || now <= descriptorsReturned_ + retry) return {};
        // A stopped helper is killed after six seconds, unless the manager could not be told that a pad is muted.
        if (daemon != nullptr && daemon->isStopped && (now < stoppedAt_ + 6s || now < queueWasFull_ + 10s)) return {};
        // Without the release the next start unmutes.
        if (world_.wasReleaseKilled && (!world_.isWanted || now <= world_.startAt)) return {};
        if (now < std::max(pad.mayEnded, sessionLookedAt_) + graceToUnmute()) return {};
        return "is muted by nobody's word since " + text(now - pad.mayEnded);
    }
    if (!isMuted && pad.mustSince && !device.isInhibited) {
        Time due = *pad.mustSince + graceToMute();
        if (troubleEnded_.count() != 0)
            due = std::max(
                due, troubleEnded_ + std::min<Time>(301s, std::max<Time>(61s, troubleEnded_ - troubleBegan_ + 3s)));
        if (pad.ungrantedAt.count() != 0) due = std::max(due, pad.grantedAt + 5s);
        due = std::max(due, disturbedAt_ + 9s);  // a hand-over that failed is tried again after 2 s, then 4 s
        if (now >= due && now > pad.refusalEnded + 5s)
            return "is not muted, although it must be since " + text(now - *pad.mustSince);
    }
    return {};
}

// Only the person at the machine may write the flag.
std::string ReferenceModel::checkFlag() const {
    const Time now = machine_.now;
    const bool isSettled = isServing() && !machine_.daemon()->isStopped && !isTroubled_ &&
                           (troubleEnded_.count() == 0 || now > troubleEnded_ + 301s) && now > disturbedAt_ + 9s &&
                           !isRecently(looks_, now, 500ms, 3) && !isRecently(userChanges_, now, 5s, 4);
    if (!isSettled) return {};
    const std::string list = accessList(machine_.flag());
    for (std::size_t user = 0; user < users.size(); ++user) {
        const bool mayWriteIt = list.find(",u:" + std::to_string(users.at(user)) + ":rw-,") != std::string::npos;
        if (mayWriteIt != (actual_.user == static_cast<int>(user)))
            return "user " + std::to_string(user) + (mayWriteIt ? " may" : " may not") + " write the flag: " + list;
        const std::string left = accessList(machine_.folder() + "/state.left." + std::to_string(users.at(user)));
        if (left.find(",u:") != std::string::npos)
            return "user " + std::to_string(user) + " may write what they have left: " + left;
    }
    return {};
}

// A daemon in whose life nothing is wrong logs nothing, and no line is repeated without end.
std::string ReferenceModel::checkLog() const {
    const Process* daemon = machine_.daemon();
    if (daemon == nullptr) return {};
    std::map<std::string, int> times;
    const std::string* last = nullptr;
    for (const std::string& line : daemon->log) {
        if (line.empty()) {  // another process of the helper has logged a line
            last = nullptr;
            continue;
        }
        if (!mayLog_ && line.find("several times in a row") == std::string::npos)
            return "logged without a reason: " + line;
        if (last != nullptr && *last == line) return "logged twice in a row: " + line;
        if (++times[line] > 3 + machine_.now / 1h) return "logged again and again: " + line;
        last = &line;
    }
    return {};
}

// While nothing happens, no timer runs, except for the watchdog's while a pad is muted. The watchdog is on exactly
// then.
std::string ReferenceModel::checkSleep() const {
    if (!isServing() || machine_.daemon()->isStopped || machine_.now < queueWasFull_ + 3s) return {};
    const bool isOn = machine_.watchdogTime.count() != 0;
    if (isOn != !machine_.records().empty())
        return isOn ? "the watchdog is on without a muted pad" : "the watchdog is off";
    const bool isQuiet = !mayLog_ && std::ranges::all_of(keptVersion_, [](int version) { return version < 0; }) &&
                         (looks_.empty() || looks_.back() + 5s < machine_.now) && !isOn;
    const auto timers = std::ranges::count_if(machine_.sources, [this](const Source* source) {
        return source->isEnabled && source->descriptor < 0 && source->signal == 0 && source->time > machine_.now + 10s;
    });
    const auto soon = std::ranges::count_if(machine_.sources, [](const Source* source) {
        return source->isEnabled && source->descriptor < 0 && source->signal == 0;
    });
    return isQuiet && soon - timers > 1 ? "timers run although nothing happens" : "";
}

}  // namespace kovra::helper::model
