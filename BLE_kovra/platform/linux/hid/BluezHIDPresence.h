#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "BLE_kovra/platform/linux/bus/BusMessage.h"
#include "BLE_kovra/platform/linux/bus/SystemBus.h"
#include "BLE_kovra/platform/linux/hid/HIDPresence.h"

namespace kovra {

// What BlueZ says of a Bluetooth device, whose node it may keep while the device is not connected.
//
// Asked only while there are Bluetooth nodes; listens to these devices alone. What BlueZ said last holds while it is
// not running and until it says something else; a device that it never knew is there. It is never started.
class BluezHIDPresence : public HIDPresence {
  public:
    explicit BluezHIDPresence(SystemBus& bus);

    Answer ask(const std::string& nodeName, const UdevHIDNode& node) override;
    void forget(const std::string& nodeName) override;

  private:
    using Addresses = std::pair<std::string, std::string>;  // of a device and of the adapter that it is connected to
    struct Device {
        std::set<std::string> nodes;
        std::string path = {};  // BlueZ's object; empty while it is not known
        std::optional<bool> isConnected = {};
        std::vector<BusSlot> slots = {};
    };
    struct Object;

    void inquire();
    void learn(sd_bus_message* objects);
    bool listen();
    bool listenTo(Device& device);
    BusSlot match(const std::string& rule, sd_bus_message_handler_t handler);
    void deviceAdded(const std::string& path, std::optional<bool> isConnected);
    void setConnected(const std::string& path, bool isConnected);
    void tell(const Device& device);
    void post(std::function<void(BluezHIDPresence&)> work);

    static int heardOwner(sd_bus_message* message, void* context, sd_bus_error* error);
    static int answered(sd_bus_message* reply, void* context, sd_bus_error* error);
    static int heardChange(sd_bus_message* message, void* context, sd_bus_error* error);
    static int heardAddition(sd_bus_message* message, void* context, sd_bus_error* error);
    static int heardRemoval(sd_bus_message* message, void* context, sd_bus_error* error);

    SystemBus& bus_;
    std::map<Addresses, Device> devices_;
    BusSlot ownerSlot_;
    BusSlot additionsSlot_;  // present while there are devices that BlueZ does not know
    BusSlot question_;
    bool isAsking_ = false;
    std::uint64_t questions_ = 0;
    std::shared_ptr<BluezHIDPresence*> self_;  // how a queued block learns that this is no more
};

}  // namespace kovra
