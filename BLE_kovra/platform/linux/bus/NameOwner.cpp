#include "BLE_kovra/platform/linux/bus/NameOwner.h"

#include <utility>

namespace kovra {

namespace {

// The name of the bus itself. The bus has no unique name, so the signals of the bus have this name as their sender.
constexpr const char* busName = "org.freedesktop.DBus";
constexpr const char* path = "/org/freedesktop/DBus";

std::string_view senderOf(sd_bus_message* message) {
    const char* sender = sd_bus_message_get_sender(message);
    return sender == nullptr ? std::string_view() : sender;
}

}  // namespace

NameOwner::NameOwner(sd_bus* bus, std::string name, BusFailures& failures)
    : bus_(bus), name_(std::move(name)), failures_(failures) {
    if (name_ != busName) return;
    owner_ = name_;
    isKnown_ = true;
}

void NameOwner::ifSent(sd_bus_message* message, std::function<void()> then) {
    if (isKnown_) {
        if (isOwner(senderOf(message))) then();
        return;
    }
    waiting_.push_back({std::string(senderOf(message)), std::move(then)});
    if (waiting_.size() == 1) ask();
}

// Subscribes to changes of the owner before requesting the owner, so that no change is missed.
void NameOwner::ask() {
    const std::string rule = std::string("type='signal',sender='") + busName + "',path='" + path + "',interface='" +
                             busName + "',member='NameOwnerChanged',arg0='" + name_ + "'";
    sd_bus_slot* slot = nullptr;
    check(sd_bus_add_match_async(bus_, &slot, rule.c_str(), changed, installed, this));
    changes_.reset(slot);
    slot = nullptr;
    check(sd_bus_call_method_async(bus_, &slot, busName, path, busName, "GetNameOwner", queried, this, "s",
                                   name_.c_str()));
    query_.reset(slot);
    if (!query_) waiting_.clear();  // the next message repeats the request
}

int NameOwner::changed(sd_bus_message* message, void* context, sd_bus_error*) {
    auto* self = static_cast<NameOwner*>(context);
    const char* name = nullptr;
    const char* now = nullptr;
    if (self == nullptr || senderOf(message) != busName) return 0;
    if (sd_bus_message_read(message, "sss", &name, nullptr, &now) > 0 && self->name_ == name) self->owner_ = now;
    return 0;
}

int NameOwner::queried(sd_bus_message* answer, void* context, sd_bus_error*) {
    auto* self = static_cast<NameOwner*>(context);
    const char* owner = nullptr;
    // The bus replies with an error if the name has no owner.
    if (self == nullptr) return 0;
    if (sd_bus_message_read(answer, "s", &owner) > 0) self->owner_ = owner;
    self->isKnown_ = true;
    for (const Waiting& each : std::exchange(self->waiting_, {})) {
        if (self->isOwner(each.sender)) each.then();
    }
    return 0;
}

// Without this handler, sd-bus closes the connection if the bus refuses the match.
int NameOwner::installed(sd_bus_message* answer, void* context, sd_bus_error*) {
    auto* self = static_cast<NameOwner*>(context);
    const sd_bus_error* error = sd_bus_message_get_error(answer);
    if (self != nullptr && error != nullptr) self->failures_.add("owner of " + self->name_ + ": " + error->message);
    return 0;
}

void NameOwner::check(int result) const {
    if (result < 0) failures_.add("owner of " + name_, result);
}

}  // namespace kovra
