// The behavior of the devices, the decision and the state. The machine and the process are in ReferenceModel.cpp.
#include "tests/model/ReferenceModel.h"

#include <algorithm>
#include <chrono>

namespace kovra::model {

// --- The devices

void ReferenceModel::report(Job::Kind kind, std::uint64_t number, const DeviceDescription& device) {
    if (!launched_ || !delegateLives()) return;
    Job job{kind, number, device};
    if (deliverAtOnce_)
        play(job);
    else
        post(std::move(job));
}

void ReferenceModel::interfaceAttached(InterfaceID id, const DeviceDescription& device) {
    if (!delegateLives()) return;
    const std::string key = nameOf(device) + "#" + std::to_string(device.vendorID.value_or(0)) + ":" +
                            std::to_string(device.productID.value_or(0));
    record_.attach(id, key, nameOf(device));
    publish();
}

void ReferenceModel::interfaceRemoved(InterfaceID id) {
    if (!delegateLives()) return;
    const auto removal = record_.remove(id);
    if (!removal) return;
    if (!removal->wasLast) return publish();
    if (!running_) return;
    Job wake{Job::Kind::wake};
    wake.removal = *removal;
    wakes_.emplace(now_ + std::chrono::seconds(2), std::move(wake));
}

void ReferenceModel::publish() {
    Job job{Job::Kind::devices};
    job.devices = record_.list();
    post(std::move(job));
}

// --- The decision

void ReferenceModel::evaluate() {
    const bool mouse = std::ranges::any_of(devices_, [&](const DeviceRecord::Device& device) {
        return device.connected && selection_.contains(device.key);
    });
    const bool on = enabled_ && (always_ || mouse);
    writeFlag(on);
    announce(Property::blocking, words::truth(on));
    blocking_ = on;
}

void ReferenceModel::writeFlag(bool on) {
    if (lastWritten_ == on && !lastFailed_) return;
    const std::string text = on ? "on" : "off";
    std::optional<std::string> reason = failAlways_;
    if (!failures_.empty()) {
        reason = failures_.front();
        failures_.pop_front();
    }
    lastFailed_ = reason.has_value();
    journal_.push_back(words::wrote("/Library/Application Support/ble-kovra/state", text, !reason));
    if (reason)
        journal_.push_back(words::logged("ble-kovra: не удалось записать флаг (" + text + "): " + *reason));
    else
        lastWritten_ = on;
}

// --- The state

std::string ReferenceModel::text(const Devices& devices) {
    std::string text;
    for (const DeviceRecord::Device& device : devices) text += words::device(device.key, device.name, device.connected);
    return text;
}

std::string ReferenceModel::stored(Property property) const {
    switch (property) {
        case Property::devices:
            return text(devices_);
        case Property::selectedIDs:
            return words::keys(selection_);
        case Property::isEnabled:
            return words::truth(enabled_);
        case Property::mode:
            return modeText();
        case Property::blocking:
            break;
    }
    return words::truth(blocking_);
}

std::string ReferenceModel::snapshot() const {
    return stored(Property::devices) + "\n" + stored(Property::selectedIDs) + "\n" + stored(Property::isEnabled) + " " +
           stored(Property::mode) + " " + stored(Property::blocking);
}

void ReferenceModel::notify(Listener& listener, const std::string& coming) {
    if (listener.role == Listener::Role::recorder) {
        journal_.push_back(words::announced(listener.property, coming, stored(listener.property)));
    } else if (listener.role == Listener::Role::subscriber) {
        if (listener.timesLeft-- > 0) perform(listener.reaction);
    } else if (delegateLives()) {
        post({listener.property == Property::selectedIDs ? Job::Kind::selection
              : listener.property == Property::isEnabled ? Job::Kind::isEnabled
                                                         : Job::Kind::mode});
    }
}

// A subscriber that is added during an announcement does not receive that announcement.
void ReferenceModel::announce(Property property, const std::string& coming) {
    const std::size_t audience = listeners_.size();
    for (std::size_t i = 0; i < audience; ++i) {
        const std::shared_ptr<Listener> listener = listeners_[i];
        if (listener->property == property && !listener->gone) notify(*listener, coming);
    }
}

void ReferenceModel::select(std::set<std::string> keys) {
    announce(Property::selectedIDs, words::keys(keys));
    selection_ = std::move(keys);
}

void ReferenceModel::enable(bool isEnabled) {
    announce(Property::isEnabled, words::truth(isEnabled));
    enabled_ = isEnabled;
}

void ReferenceModel::setMode(bool always) {
    announce(Property::mode, always ? "always" : "onDevice");
    always_ = always;
}

void ReferenceModel::save(const std::string& key, const PreferenceValue& value, const std::string& text) {
    disk_.insert_or_assign(key, value);
    journal_.push_back(words::saved(key, text));
}

// A subscription with a number in use replaces the earlier one.
void ReferenceModel::subscribe(const Action& action) {
    const auto listener = std::make_shared<Listener>(
        Listener{Listener::Role::subscriber, action.property, 0, action.times, action.inner.at(0)});
    listeners_.push_back(listener);
    if (action.truth) notify(*listener, stored(action.property));
    listener->number = action.number;  // unsubscribe finds it only from now on, as in Program
    for (const auto& other : listeners_) {
        if (other != listener && other->role == Listener::Role::subscriber && other->number == action.number) {
            other->gone = true;
        }
    }
}

}  // namespace kovra::model
