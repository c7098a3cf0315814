#include "BLE_kovra/platform/linux/bus/NameOwner.h"

#include <utility>

namespace kovra {

namespace {

// The name of the bus itself. The bus has no unique name; its own signals have this name as their sender.
constexpr const char* bus = "org.freedesktop.DBus";
constexpr const char* path = "/org/freedesktop/DBus";

std::string_view senderOf(sd_bus_message* message) {
    const char* sender = sd_bus_message_get_sender(message);
    return sender == nullptr ? std::string_view() : sender;
}

}  // namespace

NameOwner::NameOwner(sd_bus* connection, std::string name, BusFailures& failures)
    : name_(std::move(name)), failures_(failures) {
    if (name_ == bus) {
        owner_ = name_;
        return;
    }
    const std::string rule = std::string("type='signal',sender='") + bus + "',path='" + path + "',interface='" + bus +
                             "',member='NameOwnerChanged',arg0='" + name_ + "'";
    sd_bus_slot* slot = nullptr;
    check(sd_bus_add_match_async(connection, &slot, rule.c_str(), changed, installed, this));
    changes_.reset(slot);
    slot = nullptr;
    check(
        sd_bus_call_method_async(connection, &slot, bus, path, bus, "GetNameOwner", queried, this, "s", name_.c_str()));
    query_.reset(slot);
}

bool NameOwner::hasSent(sd_bus_message* message) const { return !owner_.empty() && senderOf(message) == owner_; }

int NameOwner::changed(sd_bus_message* message, void* context, sd_bus_error*) {
    auto* self = static_cast<NameOwner*>(context);
    const char* name = nullptr;
    const char* now = nullptr;
    if (self == nullptr || senderOf(message) != bus) return 0;
    if (sd_bus_message_read(message, "sss", &name, nullptr, &now) > 0 && self->name_ == name) self->owner_ = now;
    return 0;
}

int NameOwner::queried(sd_bus_message* answer, void* context, sd_bus_error*) {
    auto* self = static_cast<NameOwner*>(context);
    const char* owner = nullptr;
    // The bus replies with an error if the name has no owner.
    if (self != nullptr && sd_bus_message_read(answer, "s", &owner) > 0) self->owner_ = owner;
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
