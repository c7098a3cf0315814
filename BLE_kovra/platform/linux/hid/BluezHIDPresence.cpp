#include "BLE_kovra/platform/linux/hid/BluezHIDPresence.h"

#include <algorithm>
#include <cctype>
#include <string_view>

namespace kovra {

namespace {

constexpr const char* name = "org.bluez";
constexpr const char* objectManager = "org.freedesktop.DBus.ObjectManager";
constexpr std::string_view deviceInterface = "org.bluez.Device1";
constexpr std::string_view adapterInterface = "org.bluez.Adapter1";

// As BlueZ writes addresses; the kernel has them in lower case.
std::string capital(std::string text) {
    std::ranges::transform(text, text.begin(), [](unsigned char c) { return std::toupper(c); });
    return text;
}

// How the path of a device's object ends.
std::string lastStep(std::string address) {
    std::ranges::replace(address, ':', '_');
    return "/dev_" + address;
}

}  // namespace

// An object of BlueZ's that is an adapter or a device.
struct BluezHIDPresence::Object {
    std::string path = {};
    std::string address = {};
    std::string adapter = {};              // a device's: the path of that object
    std::optional<bool> isConnected = {};  // of a device

    // The interfaces with their properties that come next in the message.
    static Object read(sd_bus_message* message, std::string path) {
        Object object{std::move(path)};
        forEachEntry(message, "{sa{sv}}", [&](std::string_view interface) {
            if (interface != deviceInterface && interface != adapterInterface) return 0;
            return forEachEntry(message, "{sv}", [&](std::string_view property) {
                const char* text = nullptr;
                int result = 0;
                if (property == "Address") {
                    result = sd_bus_message_read(message, "v", "s", &text);
                    if (result > 0) object.address = capital(text);
                } else if (property == "Adapter") {
                    result = sd_bus_message_read(message, "v", "o", &text);
                    if (result > 0) object.adapter = text;
                } else if (property == "Connected") {
                    int value = 0;
                    result = sd_bus_message_read(message, "v", "b", &value);
                    if (result > 0) object.isConnected = value != 0;
                }
                return result;
            });
        });
        return object;
    }
};

BluezHIDPresence::BluezHIDPresence(SystemBus& bus) : bus_(bus), self_(std::make_shared<BluezHIDPresence*>(this)) {}

HIDPresence::Answer BluezHIDPresence::ask(const std::string& nodeName, const UdevHIDNode& node) {
    const bool isOnBluetooth = nodeName.starts_with("0005:");
    if (!isOnBluetooth || node.uniq.empty()) return Answer::there;
    const auto [found, isNew] = devices_.try_emplace({capital(node.uniq), capital(node.phys)});
    Device& device = found->second;
    device.nodes.insert(nodeName);
    if (isNew) inquire();
    if (device.isConnected) return *device.isConnected ? Answer::there : Answer::away;
    return isAsking_ ? Answer::notYetKnown : Answer::there;
}

void BluezHIDPresence::forget(const std::string& nodeName) {
    for (auto& [addresses, device] : devices_) device.nodes.erase(nodeName);
    std::erase_if(devices_, [](const auto& known) { return known.second.nodes.empty(); });
    if (!devices_.empty()) return;
    for (BusSlot* slot : {&ownerSlot_, &additionsSlot_, &question_}) slot->reset();
    isAsking_ = false;
}

// Without starting a service that nobody runs.
void BluezHIDPresence::inquire() {
    if (bus_.bus() == nullptr) return;
    if (!ownerSlot_) {
        ownerSlot_ = match(
            "sender='org.freedesktop.DBus',path='/org/freedesktop/DBus',interface='org.freedesktop.DBus',"
            "member='NameOwnerChanged',arg0='org.bluez'",
            heardOwner);
    }
    sd_bus_message* made = nullptr;
    if (sd_bus_message_new_method_call(bus_.bus(), &made, name, "/", objectManager, "GetManagedObjects") < 0) return;
    const BusMessage call(made);
    ++questions_;
    sd_bus_slot* slot = nullptr;
    isAsking_ = sd_bus_message_set_auto_start(made, 0) >= 0 &&
                sd_bus_call_async(bus_.bus(), &slot, made, answered, this, 0) >= 0;
    question_.reset(slot);
}

// All that BlueZ knows, or an error for want of it.
void BluezHIDPresence::learn(sd_bus_message* objects) {
    std::map<std::string, std::string> adapters;
    std::vector<Object> devices;
    if (sd_bus_message_is_method_error(objects, nullptr) <= 0) {
        forEachEntry(objects, "{oa{sa{sv}}}", [&](std::string_view path) {
            Object object = Object::read(objects, std::string(path));
            if (object.isConnected) {
                devices.push_back(std::move(object));
            } else {
                adapters[object.path] = object.address;
            }
            return 1;
        });
    }
    for (const Object& object : devices) {
        const auto found = devices_.find({object.address, adapters[object.adapter]});
        if (found == devices_.end()) continue;
        Device& device = found->second;
        if (device.path != object.path) device.slots.clear();
        device.path = object.path;
        device.isConnected = object.isConnected;
    }
    // What changed between the answer and the listening is asked for anew.
    if (listen()) inquire();
    for (const auto& [addresses, device] : devices_) tell(device);
}

// To whatever is not listened to yet. Whether there was any.
bool BluezHIDPresence::listen() {
    bool isNew = false;
    bool isAnyUnknown = false;
    for (auto& [addresses, device] : devices_) {
        if (device.path.empty())
            isAnyUnknown = true;
        else if (listenTo(device))
            isNew = true;
    }
    if (!isAnyUnknown) {
        additionsSlot_.reset();
    } else if (!additionsSlot_) {
        additionsSlot_ = match(
            "sender='org.bluez',interface='org.freedesktop.DBus.ObjectManager',"
            "member='InterfacesAdded',path='/',arg0path='/org/bluez/'",
            heardAddition);
        isNew = true;
    }
    return isNew;
}

bool BluezHIDPresence::listenTo(Device& device) {
    if (!device.slots.empty()) return false;
    const std::string ofObject =
        "sender='org.bluez',interface='org.freedesktop.DBus.ObjectManager',path='/',arg0path='" + device.path +
        "',member=";
    device.slots.push_back(
        match("sender='org.bluez',interface='org.freedesktop.DBus.Properties',"
              "member='PropertiesChanged',arg0='org.bluez.Device1',path='" +
                  device.path + "'",
              heardChange));
    device.slots.push_back(match(ofObject + "'InterfacesAdded'", heardAddition));
    device.slots.push_back(match(ofObject + "'InterfacesRemoved'", heardRemoval));
    return true;
}

BusSlot BluezHIDPresence::match(const std::string& rule, sd_bus_message_handler_t handler) {
    sd_bus_slot* slot = nullptr;
    sd_bus_add_match_async(bus_.bus(), &slot, ("type='signal'," + rule).c_str(), handler, nullptr, this);
    return BusSlot(slot);
}

void BluezHIDPresence::deviceAdded(const std::string& path, std::optional<bool> isConnected) {
    if (isConnected) setConnected(path, *isConnected);
    const bool wasUnknown = std::ranges::any_of(devices_, [&](const auto& known) {
        return known.second.path.empty() && path.ends_with(lastStep(known.first.first));
    });
    if (wasUnknown) inquire();
}

void BluezHIDPresence::setConnected(const std::string& path, bool isConnected) {
    for (auto& [addresses, device] : devices_) {
        if (device.path != path) continue;
        device.isConnected = isConnected;
        tell(device);
    }
}

void BluezHIDPresence::tell(const Device& device) {
    for (const std::string& node : device.nodes) onChanged(node);
}

int BluezHIDPresence::heardOwner(sd_bus_message* message, void* context, sd_bus_error*) {
    auto* self = static_cast<BluezHIDPresence*>(context);
    const char* newOwner = nullptr;
    if (self == nullptr || sd_bus_message_read(message, "sss", nullptr, nullptr, &newOwner) < 0) return 0;
    if (*newOwner != '\0') self->post([](BluezHIDPresence& presence) { presence.inquire(); });
    return 0;
}

int BluezHIDPresence::answered(sd_bus_message* reply, void* context, sd_bus_error*) {
    auto* self = static_cast<BluezHIDPresence*>(context);
    if (self == nullptr) return 0;
    self->post([kept = std::shared_ptr(BusMessage(sd_bus_message_ref(reply))),
                number = self->questions_](BluezHIDPresence& presence) {
        if (number != presence.questions_) return;  // another one has been asked since
        presence.isAsking_ = false;
        presence.learn(kept.get());
    });
    return 0;
}

int BluezHIDPresence::heardChange(sd_bus_message* message, void* context, sd_bus_error*) {
    auto* self = static_cast<BluezHIDPresence*>(context);
    if (self == nullptr || sd_bus_message_skip(message, "s") < 0) return 0;
    if (const auto isConnected = readBooleanProperty(message, "Connected")) {
        self->post([path = std::string(sd_bus_message_get_path(message)), isConnected](BluezHIDPresence& presence) {
            presence.setConnected(path, *isConnected);
        });
    }
    return 0;
}

int BluezHIDPresence::heardAddition(sd_bus_message* message, void* context, sd_bus_error*) {
    auto* self = static_cast<BluezHIDPresence*>(context);
    const char* path = nullptr;
    if (self == nullptr || sd_bus_message_read(message, "o", &path) < 0) return 0;
    if (const Object object = Object::read(message, path); object.isConnected) {
        self->post([object](BluezHIDPresence& presence) { presence.deviceAdded(object.path, object.isConnected); });
    }
    return 0;
}

int BluezHIDPresence::heardRemoval(sd_bus_message* message, void* context, sd_bus_error*) {
    auto* self = static_cast<BluezHIDPresence*>(context);
    const char* path = nullptr;
    if (self == nullptr || sd_bus_message_read(message, "o", &path) < 0 ||
        sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, "s") < 0) {
        return 0;
    }
    const char* interface = nullptr;
    while (sd_bus_message_read(message, "s", &interface) > 0) {
        if (interface != deviceInterface) continue;
        self->post([gone = std::string(path)](BluezHIDPresence& presence) { presence.setConnected(gone, false); });
    }
    return 0;
}

void BluezHIDPresence::post(std::function<void(BluezHIDPresence&)> work) {
    bus_.loop().async([weak = std::weak_ptr(self_), work = std::move(work)] {
        if (const auto self = weak.lock()) work(**self);
    });
}

}  // namespace kovra
