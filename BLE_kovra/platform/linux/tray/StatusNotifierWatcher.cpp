#include "BLE_kovra/platform/linux/tray/StatusNotifierWatcher.h"

#include <utility>

#include "BLE_kovra/platform/linux/bus/BusMessage.h"

namespace kovra {

namespace {

constexpr const char* name = "org.kde.StatusNotifierWatcher";
constexpr const char* path = "/StatusNotifierWatcher";
constexpr const char* interface = "org.kde.StatusNotifierWatcher";

// Without waiting, and without starting a service that nobody runs: a desktop that wants one starts it.
BusSlot ask(sd_bus* bus, const char* ofInterface, const char* method, const char* first, const char* second,
            sd_bus_message_handler_t answered, void* context) {
    sd_bus_message* made = nullptr;
    if (sd_bus_message_new_method_call(bus, &made, name, path, ofInterface, method) < 0) return nullptr;
    const BusMessage call(made);
    BusWriter writer(made);
    writer.text(first);
    if (second != nullptr) writer.text(second);
    sd_bus_slot* slot = nullptr;
    if (writer.result() < 0 || sd_bus_message_set_auto_start(made, 0) < 0 ||
        sd_bus_call_async(bus, &slot, made, answered, context, 0) < 0) {
        return nullptr;
    }
    return BusSlot(slot);
}

}  // namespace

StatusNotifierWatcher::StatusNotifierWatcher(SessionBus& bus)
    : loop_(bus.loop()),
      self_(std::make_shared<StatusNotifierWatcher*>(this)),
      listener_(bus.listen([this](sd_bus* connected) { up(connected); }, [this] { gone(); })) {}

void StatusNotifierWatcher::setItem(std::string busName) {
    item_ = std::move(busName);
    isRegistered_ = false;
    registerItem();
}

void StatusNotifierWatcher::up(sd_bus* bus) {
    bus_ = bus;
    sd_bus_slot* slot = nullptr;
    // One particular name's owner, so that the bus does not tell of every program that comes and goes.
    sd_bus_add_match_async(bus, &slot,
                           "type='signal',sender='org.freedesktop.DBus',path='/org/freedesktop/DBus',"
                           "interface='org.freedesktop.DBus',member='NameOwnerChanged',"
                           "arg0='org.kde.StatusNotifierWatcher'",
                           heardOwner, nullptr, this);
    ownerSlot_.reset(slot);
    slot = nullptr;
    sd_bus_match_signal_async(bus, &slot, name, path, interface, "StatusNotifierHostRegistered", heardHosts, nullptr,
                              this);
    hostCameSlot_.reset(slot);
    slot = nullptr;
    sd_bus_match_signal_async(bus, &slot, name, path, interface, "StatusNotifierHostUnregistered", heardHosts, nullptr,
                              this);
    hostWentSlot_.reset(slot);
    registerItem();
    askForHost();
}

void StatusNotifierWatcher::gone() {
    for (BusSlot* slot : {&ownerSlot_, &hostCameSlot_, &hostWentSlot_, &registration_, &question_}) slot->reset();
    bus_ = nullptr;
    isRegistered_ = false;
    setHasHost(false);
}

void StatusNotifierWatcher::ownerChanged(bool isThere) {
    isRegistered_ = false;
    if (isThere) {
        registerItem();
        askForHost();
    } else {
        question_.reset();
        setHasHost(false);
    }
}

void StatusNotifierWatcher::hostsChanged() {
    registerItem();  // with a watcher that had its name before it could take items
    askForHost();
}

void StatusNotifierWatcher::registerItem() {
    if (bus_ == nullptr || item_.empty() || isRegistered_) return;
    isRegistered_ = true;
    registration_ = ask(bus_, interface, "RegisterStatusNotifierItem", item_.c_str(), nullptr, registered, this);
}

void StatusNotifierWatcher::askForHost() {
    if (bus_ == nullptr) return;
    question_ = ask(bus_, "org.freedesktop.DBus.Properties", "Get", interface, "IsStatusNotifierHostRegistered",
                    toldHost, this);
}

void StatusNotifierWatcher::setHasHost(bool hasHost) {
    if (std::exchange(hasHost_, hasHost) != hasHost && onHostChanged) onHostChanged();
}

int StatusNotifierWatcher::heardOwner(sd_bus_message* message, void* context, sd_bus_error*) {
    auto* self = static_cast<StatusNotifierWatcher*>(context);
    const char* newOwner = nullptr;
    if (self == nullptr || sd_bus_message_read(message, "sss", nullptr, nullptr, &newOwner) < 0) return 0;
    self->post([isThere = *newOwner != '\0'](StatusNotifierWatcher& watcher) { watcher.ownerChanged(isThere); });
    return 0;
}

int StatusNotifierWatcher::heardHosts(sd_bus_message*, void* context, sd_bus_error*) {
    auto* self = static_cast<StatusNotifierWatcher*>(context);
    if (self != nullptr) self->post([](StatusNotifierWatcher& watcher) { watcher.hostsChanged(); });
    return 0;
}

int StatusNotifierWatcher::registered(sd_bus_message* reply, void* context, sd_bus_error*) {
    auto* self = static_cast<StatusNotifierWatcher*>(context);
    if (self == nullptr || sd_bus_message_is_method_error(reply, nullptr) <= 0) return 0;
    self->isRegistered_ = false;
    return 0;
}

int StatusNotifierWatcher::toldHost(sd_bus_message* reply, void* context, sd_bus_error*) {
    auto* self = static_cast<StatusNotifierWatcher*>(context);
    if (self == nullptr) return 0;
    int hasHost = 0;
    if (sd_bus_message_is_method_error(reply, nullptr) > 0 || sd_bus_message_read(reply, "v", "b", &hasHost) < 0) {
        hasHost = 0;
    }
    self->post([hasHost](StatusNotifierWatcher& watcher) { watcher.setHasHost(hasHost != 0); });
    return 0;
}

void StatusNotifierWatcher::post(std::function<void(StatusNotifierWatcher&)> work) {
    loop_.async([weak = std::weak_ptr(self_), work = std::move(work)] {
        if (const auto self = weak.lock()) work(**self);
    });
}

}  // namespace kovra
