#include "BLE_kovra/platform/linux/hid/UdevHIDAnnouncer.h"

#include <algorithm>
#include <set>
#include <utility>

#include "BLE_kovra/platform/MainQueue.h"

namespace kovra {

using std::chrono_literals::operator""ms;

UdevHIDAnnouncer::UdevHIDAnnouncer(MainQueue& queue, udev* context, std::vector<std::unique_ptr<HIDPresence>> presences,
                                   Actions actions)
    : queue_(queue), nodes_(context), actions_(std::move(actions)), presences_(std::move(presences)) {
    for (const auto& presence : presences_) changes_.push_back(presence->listen(actions_.recheck));
}

UdevHIDAnnouncer::~UdevHIDAnnouncer() {
    for (const auto& [name, task] : pending_) task->cancel();
}

void UdevHIDAnnouncer::check(const std::string& nodeName, IfMissing ifMissing) { examine(nodeName, false, ifMissing); }

UdevHIDAnnouncer::AllNodes UdevHIDAnnouncer::allNodes() const {
    const auto listed = nodes_.names();
    std::set<std::string> all;
    if (listed) all.insert(listed->begin(), listed->end());
    for (const auto& [name, device] : announced_) all.insert(name);
    for (const auto& [name, task] : pending_) all.insert(name);
    return {{all.begin(), all.end()}, listed.has_value()};
}

void UdevHIDAnnouncer::examine(const std::string& nodeName, bool isOverdue, IfMissing ifMissing) {
    const UdevHIDNode node = UdevHIDNodes::read(nodeName);
    if (node.device) {
        const HIDPresence::Answer presence = presenceOf(nodeName, node);
        if (presence == HIDPresence::Answer::absent) return deviceAbsent(nodeName);
        const bool mayWait = !isOverdue && !announced_.contains(nodeName);
        if (presence == HIDPresence::Answer::unknown && mayWait) return examineLater(nodeName);
    }
    switch (node.state) {
        case UdevHIDNode::State::missing:
            if (ifMissing == IfMissing::awaitRemoval && announced_.contains(nodeName))
                examineLater(nodeName);
            else
                nodeRemoved(nodeName);
            break;
        case UdevHIDNode::State::unreadable:
            examineLater(nodeName);
            break;
        case UdevHIDNode::State::unbound:
            if (isOverdue || announced_.contains(nodeName))
                nodePresent(nodeName, *node.device);
            else
                examineLater(nodeName);
            break;
        case UdevHIDNode::State::bound:
            nodePresent(nodeName, *node.device);
            break;
    }
}

void UdevHIDAnnouncer::examineLater(const std::string& nodeName) {
    if (!pending_.contains(nodeName)) examineAfter(0ms, nodeName);
}

// Examines the node at the next of its times, which follows the one at which it has `waited`.
void UdevHIDAnnouncer::examineAfter(std::chrono::milliseconds waited, const std::string& nodeName) {
    const std::chrono::milliseconds next = std::min(std::max(firstLook, 2 * waited), timeout);
    pending_[nodeName] = queue_.asyncAfter(next - waited, lifetime_.guard([this, next, nodeName] {
        const bool isOverdue = next == timeout;
        if (isOverdue)
            pending_.erase(nodeName);
        else
            examineAfter(next, nodeName);
        examine(nodeName, isOverdue, isOverdue ? IfMissing::announceRemoval : IfMissing::awaitRemoval);
    }));
}

HIDPresence::Answer UdevHIDAnnouncer::presenceOf(const std::string& nodeName, const UdevHIDNode& node) {
    auto answer = HIDPresence::Answer::present;
    for (const auto& presence : presences_) {
        const auto its = presence->query(nodeName, node);
        if (its == HIDPresence::Answer::absent) return its;
        if (its == HIDPresence::Answer::unknown) answer = its;
    }
    return answer;
}

void UdevHIDAnnouncer::nodeRemoved(const std::string& nodeName) {
    for (const auto& presence : presences_) presence->forget(nodeName);
    deviceAbsent(nodeName);
}

void UdevHIDAnnouncer::deviceAbsent(const std::string& nodeName) {
    if (const auto pending = pending_.extract(nodeName)) pending.mapped()->cancel();
    if (const auto announced = announced_.extract(nodeName)) actions_.removed(announced.mapped());
}

void UdevHIDAnnouncer::nodePresent(const std::string& nodeName, const UdevHIDDevice& device) {
    if (const auto pending = pending_.extract(nodeName)) pending.mapped()->cancel();
    const auto [known, isNew] = announced_.try_emplace(nodeName, device);
    if (!isNew) {
        if (known->second == device) return;
        const Lifetime::Observer self = lifetime_.observe();
        actions_.removed(std::exchange(known->second, device));
        if (self.hasEnded()) return;
    }
    actions_.attached(device);
}

}  // namespace kovra
