#include "BLE_kovra/platform/linux/hid/BluezHIDPresence.h"

#include <algorithm>
#include <cctype>
#include <string_view>

namespace kovra {

namespace {

constexpr const char* name = "org.bluez";
constexpr const char* objectManager = "org.freedesktop.DBus.ObjectManager";
constexpr const char* deviceInterface = "org.bluez.Device1";
constexpr const char* adapterInterface = "org.bluez.Adapter1";

// BlueZ writes addresses in upper case, the kernel in lower case.
std::string upperCase(std::string text) {
    std::ranges::transform(text, text.begin(), [](unsigned char c) { return std::toupper(c); });
    return text;
}

// Returns the end of the object path that BlueZ gives to the device with this address.
std::string pathSuffix(std::string address) {
    std::ranges::replace(address, ':', '_');
    return "/dev_" + address;
}

}  // namespace

// An adapter or a device of BlueZ.
struct BluezHIDPresence::Object {
    std::string path = {};
    std::string address = {};
    std::string adapter = {};              // for a device: the object path of its adapter
    std::optional<bool> isConnected = {};  // only for a device

    // Reads the next value of the message, which lists the interfaces of an object with their properties.
    static Object read(sd_bus_message* message, std::string path) {
        Object object{std::move(path)};
        forEachEntry(message, "{sa{sv}}", [&](std::string_view interface) {
            if (interface != deviceInterface && interface != adapterInterface) return 0;
            return forEachEntry(message, "{sv}", [&](std::string_view property) {
                const char* text = nullptr;
                int result = 0;
                if (property == "Address") {
                    result = sd_bus_message_read(message, "v", "s", &text);
                    if (result > 0) object.address = upperCase(text);
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

BluezHIDPresence::BluezHIDPresence(SystemBus& bus)
    : bus_(bus), listening_(bus.listen([this](const BusConnection* connection) { busChanged(connection); })) {}

void BluezHIDPresence::busChanged(const BusConnection* bus) {
    if (bus == nullptr) {
        for (BusToken* token : {&owner_, &additions_, &pendingQuery_}) token->reset();
        for (auto& [addresses, device] : devices_) device.subscriptions.clear();
    } else if (!owner_ && !devices_.empty()) {
        queryBluez();
    }
}

HIDPresence::Answer BluezHIDPresence::query(const std::string& nodeName, const UdevHIDNode& node) {
    const bool isOnBluetooth = nodeName.starts_with("0005:");
    if (!isOnBluetooth || node.uniq.empty()) return Answer::present;
    const auto [found, isNew] = devices_.try_emplace({upperCase(node.uniq), upperCase(node.phys)});
    Device& device = found->second;
    device.nodes.insert(nodeName);
    if (isNew) queryBluez();
    if (device.isConnected) return *device.isConnected ? Answer::present : Answer::absent;
    return pendingQuery_ ? Answer::unknown : Answer::present;
}

void BluezHIDPresence::forget(const std::string& nodeName) {
    for (auto& [addresses, device] : devices_) device.nodes.erase(nodeName);
    std::erase_if(devices_, [](const auto& known) { return known.second.nodes.empty(); });
    if (!devices_.empty()) return;
    for (BusToken* token : {&owner_, &additions_, &pendingQuery_}) token->reset();
}

// Queries BlueZ for all its objects. Replaces a query that is still pending.
void BluezHIDPresence::queryBluez() {
    BusConnection* bus = bus_.connection();
    if (bus == nullptr) return;
    if (!owner_) {
        owner_ = bus->watchOwner(name, [this](std::string_view, std::string_view now) {
            if (!now.empty()) queryBluez();
        });
    }
    pendingQuery_ = bus->call(
        {name, "/", objectManager, "GetManagedObjects"}, [](BusWriter&) {},
        [this](sd_bus_message* objects) {
            pendingQuery_.reset();
            objectsReceived(objects);
        });
}

// Handles the reply, which contains all objects of BlueZ or is an error.
void BluezHIDPresence::objectsReceived(sd_bus_message* objects) {
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
        if (device.path != object.path) device.subscriptions.clear();
        device.path = object.path;
        device.isConnected = object.isConnected;
    }
    // Another query covers what changed between the reply and the new subscriptions.
    if (subscribeToNew()) queryBluez();
    for (const auto& [addresses, device] : devices_) report(device);
}

// Subscribes to the signals of devices that have no subscription yet. Returns whether there is a new subscription.
bool BluezHIDPresence::subscribeToNew() {
    bool isNew = false;
    bool isAnyUnknown = false;
    for (auto& [addresses, device] : devices_) {
        if (device.path.empty())
            isAnyUnknown = true;
        else if (subscribe(device))
            isNew = true;
    }
    if (!isAnyUnknown) {
        additions_.reset();
    } else if (!additions_) {
        additions_ = subscribeToAdditions("/org/bluez/");
        isNew = true;
    }
    return isNew;
}

bool BluezHIDPresence::subscribe(Device& device) {
    BusConnection* bus = bus_.connection();
    if (!device.subscriptions.empty() || bus == nullptr) return false;
    const std::string& path = device.path;
    device.subscriptions.push_back(
        bus->receive({name, path, "org.freedesktop.DBus.Properties", "PropertiesChanged", deviceInterface},
                     [this, path](sd_bus_message* message) { deviceChanged(path, message); }));
    device.subscriptions.push_back(subscribeToAdditions(path));
    device.subscriptions.push_back(bus->receive({name, "/", objectManager, "InterfacesRemoved", "", path},
                                                [this](sd_bus_message* message) { interfacesRemoved(message); }));
    return true;
}

BusToken BluezHIDPresence::subscribeToAdditions(std::string below) {
    BusConnection* bus = bus_.connection();
    if (bus == nullptr) return nullptr;
    return bus->receive({name, "/", objectManager, "InterfacesAdded", "", std::move(below)},
                        [this](sd_bus_message* message) { interfacesAdded(message); });
}

void BluezHIDPresence::setConnected(const std::string& path, bool isConnected) {
    for (auto& [addresses, device] : devices_) {
        if (device.path != path) continue;
        device.isConnected = isConnected;
        report(device);
    }
}

void BluezHIDPresence::report(const Device& device) {
    for (const std::string& node : device.nodes) changed(node);
}

void BluezHIDPresence::deviceChanged(const std::string& path, sd_bus_message* message) {
    sd_bus_message_skip(message, "s");  // the interface, which is that of the subscription
    if (const auto isConnected = readBoolean(message, "Connected")) setConnected(path, *isConnected);
}

void BluezHIDPresence::interfacesAdded(sd_bus_message* message) {
    const char* path = nullptr;
    if (sd_bus_message_read(message, "o", &path) <= 0) return;
    const Object object = Object::read(message, path);
    if (!object.isConnected) return;
    setConnected(object.path, *object.isConnected);
    const bool wasUnknown = std::ranges::any_of(devices_, [&](const auto& known) {
        return known.second.path.empty() && object.path.ends_with(pathSuffix(known.first.first));
    });
    if (wasUnknown) queryBluez();
}

void BluezHIDPresence::interfacesRemoved(sd_bus_message* message) {
    const char* path = nullptr;
    if (sd_bus_message_read(message, "o", &path) <= 0 ||
        sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, "s") < 0) {
        return;
    }
    const char* interface = nullptr;
    while (sd_bus_message_read(message, "s", &interface) > 0) {
        if (interface == std::string_view(deviceInterface)) setConnected(path, false);
    }
}

}  // namespace kovra
