#include "BLE_kovra/platform/linux/hid/UdevHIDAnnouncer.h"

#include <set>
#include <utility>

#include "BLE_kovra/platform/MainQueue.h"

namespace kovra {

UdevHIDAnnouncer::UdevHIDAnnouncer(MainQueue& queue, udev* context, std::vector<std::unique_ptr<HIDPresence>> presences,
                                   Actions actions)
    : queue_(queue), nodes_(context), actions_(std::move(actions)), presences_(std::move(presences)) {
    for (const auto& presence : presences_) changes_.push_back(presence->listen(actions_.doubtful));
}

UdevHIDAnnouncer::~UdevHIDAnnouncer() {
    for (const auto& [name, task] : pending_) task->cancel();
}

void UdevHIDAnnouncer::look(const std::string& nodeName, IfGone ifGone) { examine(nodeName, false, ifGone); }

std::vector<std::string> UdevHIDAnnouncer::everything() const {
    const std::vector<std::string> names = nodes_.names();
    std::set<std::string> all(names.begin(), names.end());
    for (const auto& [name, device] : announced_) all.insert(name);
    for (const auto& [name, task] : pending_) all.insert(name);
    return {all.begin(), all.end()};
}

void UdevHIDAnnouncer::examine(const std::string& nodeName, bool isOverdue, IfGone ifGone) {
    const UdevHIDNode node = UdevHIDNodes::read(nodeName);
    if (node.device) {
        const HIDPresence::Answer presence = presenceOf(nodeName, node);
        if (presence == HIDPresence::Answer::away) return deviceIsAway(nodeName);
        const bool mayWait = !isOverdue && !announced_.contains(nodeName);
        if (presence == HIDPresence::Answer::notYetKnown && mayWait) return examineLater(nodeName);
    }
    switch (node.state) {
        case UdevHIDNode::State::gone:
            if (ifGone == IfGone::awaitRemoval && announced_.contains(nodeName))
                examineLater(nodeName);
            else
                nodeIsGone(nodeName);
            break;
        case UdevHIDNode::State::unreadable:
            examineLater(nodeName);
            break;
        case UdevHIDNode::State::unbound:
            if (isOverdue || announced_.contains(nodeName))
                nodeIsThere(nodeName, *node.device);
            else
                examineLater(nodeName);
            break;
        case UdevHIDNode::State::bound:
            nodeIsThere(nodeName, *node.device);
            break;
    }
}

void UdevHIDAnnouncer::examineLater(const std::string& nodeName) {
    if (pending_.contains(nodeName)) return;
    pending_[nodeName] = queue_.asyncAfter(timeout, lifetime_.guard([this, nodeName] {
        pending_.erase(nodeName);
        examine(nodeName, true, IfGone::announceRemoval);
    }));
}

HIDPresence::Answer UdevHIDAnnouncer::presenceOf(const std::string& nodeName, const UdevHIDNode& node) {
    auto answer = HIDPresence::Answer::there;
    for (const auto& presence : presences_) {
        const auto its = presence->ask(nodeName, node);
        if (its == HIDPresence::Answer::away) return its;
        if (its == HIDPresence::Answer::notYetKnown) answer = its;
    }
    return answer;
}

void UdevHIDAnnouncer::nodeIsGone(const std::string& nodeName) {
    for (const auto& presence : presences_) presence->forget(nodeName);
    deviceIsAway(nodeName);
}

void UdevHIDAnnouncer::deviceIsAway(const std::string& nodeName) {
    if (const auto pending = pending_.extract(nodeName)) pending.mapped()->cancel();
    if (const auto gone = announced_.extract(nodeName)) actions_.removed(gone.mapped());
}

void UdevHIDAnnouncer::nodeIsThere(const std::string& nodeName, const UdevHIDDevice& device) {
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
