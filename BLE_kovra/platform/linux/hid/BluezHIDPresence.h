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

// The presence of a Bluetooth device as BlueZ reports it. The device's node alone does not show this, since the node
// may remain while the device is disconnected.
//
// This class queries BlueZ only while there are Bluetooth nodes, and subscribes to the signals of their devices. While
// BlueZ has not reported one of these devices, the class also subscribes to the signals about all added devices. The
// last state that BlueZ has reported remains valid until BlueZ reports another one, even while BlueZ is not running. A
// device that BlueZ has never reported counts as present. The class never starts BlueZ. Once a lost connection to the
// bus is there again, it queries BlueZ anew.
class BluezHIDPresence : public HIDPresence {
  public:
    explicit BluezHIDPresence(SystemBus& bus);

    Answer query(const std::string& nodeName, const UdevHIDNode& node) override;
    void forget(const std::string& nodeName) override;

  private:
    using Addresses = std::pair<std::string, std::string>;  // the addresses of the device and of its adapter
    struct Device {
        std::set<std::string> nodes;
        std::string path = {};  // the path of BlueZ's object; empty until BlueZ has reported the device
        std::optional<bool> isConnected = {};
        std::vector<BusToken> subscriptions = {};
    };
    struct Object;

    void busChanged(const BusConnection* bus);
    void queryBluez();
    void objectsReceived(sd_bus_message* objects);
    bool subscribeToNew();
    bool subscribe(Device& device);
    BusToken subscribeToAdditions(std::string below);
    void setConnected(const std::string& path, bool isConnected);
    void report(const Device& device);

    void deviceChanged(const std::string& path, sd_bus_message* message);
    void interfacesAdded(sd_bus_message* message);
    void interfacesRemoved(sd_bus_message* message);

    SystemBus& bus_;
    std::map<Addresses, Device> devices_;
    BusToken owner_;
    BusToken additions_;     // set while there are devices that BlueZ has not reported
    BusToken pendingQuery_;  // set while a query is pending
    BusToken listening_;
};

}  // namespace kovra
