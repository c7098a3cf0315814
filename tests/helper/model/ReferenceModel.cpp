#include "tests/helper/model/ReferenceModel.h"

#include <algorithm>
#include <utility>

namespace kovra::helper::model {

using namespace std::chrono_literals;

ReferenceModel::ReferenceModel(const World& world) : world_(world), machine_(world.machine) {}

// The conditions under which the flag says "on" for the user at the machine.
bool ReferenceModel::isOn(const Facts& facts, bool isCertain) {
    if (!facts.user || facts.diskIsReadOnly) return false;
    const File& file = facts.files.at(static_cast<std::size_t>(*facts.user));
    if (!(isCertain ? file.isOn : file.mayBeOn) || file.names > 0) return false;
    if (isCertain && file.mayHaveNames) return false;
    // The word counts if it was written since the application was started, to 10 ms. Of several applications the one
    // that was started first counts, but the helper may not know it.
    int applications = 0;
    int writers = 0;
    for (const auto& [process, application] : facts.applications) {
        if (application.user != *facts.user || !application.hasName) continue;
        ++applications;
        const Time tolerance = isCertain ? 0ms : 20ms;
        if (file.clockWasSet || file.written + tolerance >= application.start) ++writers;
    }
    return isCertain ? applications > 0 && writers == applications && !file.clockWasSet : writers > 0;
}

void ReferenceModel::readApplications() {
    actual_.applications.clear();
    for (const auto& [process, person] : machine_.people) {
        const auto user = std::ranges::find(users, person.user) - users.begin();
        actual_.applications[process] = {static_cast<int>(user), person.name == "ble-kovra", person.start};
    }
}

std::optional<int> ReferenceModel::userAtTheMachine() const {
    const auto& session = machine_.session;
    if (machine_.loginIsBroken || !session || session->isRemote || session->type != "user" ||
        session->state != "active")
        return std::nullopt;
    const bool isBehind =
        session->terminal != 0 && machine_.shownTerminal != 0 && session->terminal != machine_.shownTerminal;
    if (isBehind) return std::nullopt;
    return static_cast<int>(std::ranges::find(users, session->user) - users.begin());
}

bool ReferenceModel::isServing() const {
    const Process* daemon = machine_.daemon();
    return daemon != nullptr && daemon->isServing && !daemon->isDead && !daemon->hasSignal;
}

bool ReferenceModel::hasTrouble() const {
    return machine_.diskIsFull || machine_.diskIsReadOnly || machine_.hasNoWatches || machine_.hasNoDescriptors ||
           machine_.loginIsBroken;
}

// The helper has a reason to look at everything.
void ReferenceModel::look() {
    if (!isServing() || machine_.daemon()->isStopped) return;
    if (seen_.user != actual_.user) {
        userChanges_.push_back(machine_.now);
        for (File& file : actual_.files) {
            if (file.clockWasSet) file.isOn = false;  // it is decided again whether the word counts
        }
        ++census["hand-overs"];
    }
    seen_ = actual_;
    looks_.push_back(machine_.now);
    for (auto& [shape, pad] : pads_) pad.isUnsettled = false;
}

// Sessions that have not changed are no reason to look at anything else.
void ReferenceModel::lookAtSession() {
    sessionLookedAt_ = machine_.now;
    if (seen_.user != actual_.user) return look();
    looks_.push_back(machine_.now);
}

// Whether the only application that the helper may know has ended.
bool ReferenceModel::hasHeldOneEnded() const {
    int known = 0;
    int ended = 0;
    for (const auto& [process, application] : seen_.applications) {
        if (!application.hasName || seen_.user != application.user) continue;
        ++known;
        if (!actual_.applications.contains(process)) ++ended;
    }
    return known == 1 && ended == 1;
}

bool ReferenceModel::isRecently(const std::deque<Time>& times, Time now, Time span, std::size_t count) {
    return static_cast<std::size_t>(std::ranges::count_if(times, [&](Time time) { return time + span > now; })) >=
           count;
}

// Each event counts at once, and after a burst within 50 ms.
Time ReferenceModel::graceToUnmute() const { return isRecently(looks_, machine_.now, 500ms, 3) ? 50ms : 0ms; }

Time ReferenceModel::graceToMute() const {
    Time grace = graceToUnmute();
    if (isRecently(looks_, machine_.now, 2500ms, 2)) grace += 500ms;    // a search that was put off
    if (isRecently(userChanges_, machine_.now, 5s, 4)) grace += 500ms;  // a hand-over that was put off
    return grace;
}

// Whether each pad is to be muted now.
void ReferenceModel::update() {
    const Time now = machine_.now;
    while (!looks_.empty() && looks_.front() + 10s < now) looks_.pop_front();
    while (!userChanges_.empty() && userChanges_.front() + 10s < now) userChanges_.pop_front();
    if (machine_.queueIsFull) queueWasFull_ = now;
    const Process* daemon = machine_.daemon();
    if (machine_.lives != lives_) {
        lives_ = machine_.lives;
        wasServing_ = false;
        mayLog_ = hasTrouble() || machine_.runIsFull;
        for (const auto& [name, device] : machine_.devices)
            mayLog_ =
                mayLog_ || device.isInhibited || device.refusesToPause || device.refusesToWork || !device.isGranted;
    }
    if (isServing() && !wasServing_) {
        wasServing_ = true;
        userChanges_.clear();
        looks_.clear();
        for (File& file : actual_.files) {
            if (file.clockWasSet) file.isOn = false;
        }
        seen_.user.reset();
        look();
    }
    if (!isServing()) {
        if (wasServing_) notServingSince_ = now;
        wasServing_ = false;
    }
    const bool isAwake = isServing() && !daemon->isStopped;
    const bool may = isServing() && (isOn(actual_, false) || isOn(seen_, false));
    const bool must =
        isAwake && !hasTrouble() && isOn(actual_, true) && isOn(seen_, true) && !actual_.runIsFull && !seen_.runIsFull;
    for (int shape = 0; shape < static_cast<int>(shapes().size()); ++shape) {
        Pad& pad = pads_[shape];
        const Device* device = world_.device(shape);
        const Shape& kind = shapes()[static_cast<std::size_t>(shape)];
        const bool isPad = kind.isPad || (kind.isTwin && world_.device(0) != nullptr);
        const bool mayPad = may && isPad;
        if (pad.may && !mayPad) pad.mayEnded = now;
        pad.may = mayPad;
        const bool mustPad = must && isPad && device != nullptr && !device->refusesToPause && !pad.isUnsettled &&
                             device->isGranted && (!device->isInhibited || device->isInhibitedByHelper);
        if (!mustPad)
            pad.mustSince.reset();
        else if (!pad.mustSince)
            pad.mustSince = now;
    }
}

}  // namespace kovra::helper::model
