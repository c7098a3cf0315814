#pragma once

#include <map>
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
        std::vector<BusToken> received = {};
    };
    struct Object;

    void inquire();
    void learn(sd_bus_message* objects);
    bool receiveNew();
    bool receive(Device& device);
    BusToken receiveAdditions(std::string below);
    void setConnected(const std::string& path, bool isConnected);
    void report(const Device& device);

    void deviceChanged(const std::string& path, sd_bus_message* message);
    void interfacesAdded(sd_bus_message* message);
    void interfacesRemoved(sd_bus_message* message);

    SystemBus& bus_;
    std::map<Addresses, Device> devices_;
    BusToken owner_;
    BusToken additions_;  // present while there are devices that BlueZ does not know
    BusToken question_;   // present while it is asked
};

}  // namespace kovra
