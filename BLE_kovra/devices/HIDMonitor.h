#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "BLE_kovra/devices/HIDDeviceInfo.h"

namespace kovra {

class DelayedTask;
class HIDDevice;
class HIDManager;
class HIDService;
class L10n;
class Locale;
class MainQueue;

// A monitor of all HID devices. It publishes them as a list with one entry per identity key.
//
// The interfaces of a device have the same key and count as one device. Two mice of one model also count as one device.
// After its last interface is removed, a device still counts as connected for `disconnectGrace`. So a wireless mouse
// that loses its connection briefly does not unmute the trackpad. A disconnected device stays in the list for as long
// as the monitor exists.
class HIDMonitor : public std::enable_shared_from_this<HIDMonitor> {
  public:
    // The time from the removal of the last interface until the device is published as disconnected.
    static constexpr std::chrono::seconds disconnectGrace{2};

    // Returns a shared_ptr, so that a running grace period can hold the monitor weakly.
    static std::shared_ptr<HIDMonitor> create(HIDService& hid, MainQueue& queue, const Locale& locale,
                                              const L10n& texts);
    ~HIDMonitor();

    // Receives the whole list: connected devices first, each group sorted by name. It is called when an interface is
    // attached, when one of several interfaces of a device is removed, and when a grace period ends. The list may be
    // unchanged.
    std::function<void(std::vector<HIDDeviceInfo>)> onDevicesChanged;

    // Starts watching. The first list is published later, from the event loop. Call start() once, after
    // onDevicesChanged has been set.
    void start();

    // Returns whether an interface of the device with this identity key is attached or its grace period is running.
    bool isConnected(const std::string& key) const;
    // Returns whether the grace period of the device with this identity key is running.
    bool isInGrace(const std::string& key) const;

  private:
    HIDMonitor(HIDService& hid, MainQueue& queue, const Locale& locale, const L10n& texts);

    struct Device {
        std::string key;
        std::size_t number;  // in the order of first attachment
        std::string name = {};
        std::string sortKey = {};                             // the collation key of `name`, which is costly to create
        std::set<std::uint64_t> present = {};                 // the attached interfaces
        std::unique_ptr<DelayedTask> pendingDisconnect = {};  // set while the grace period is running

        bool isConnected() const { return !present.empty() || pendingDisconnect != nullptr; }
    };

    void added(const HIDDevice& device);
    void removedDevice(const HIDDevice& device);
    void scheduleDisconnect(Device& device);
    void placeInOrder(const Device& device);
    void publish();
    Device& deviceOf(const std::string& key);
    void setName(Device& device, std::string name) const;

    HIDService& hid_;
    MainQueue& queue_;
    const Locale& locale_;
    const L10n& texts_;

    std::deque<Device> devices_;        // every device seen so far; none is ever removed
    std::vector<const Device*> order_;  // as published: connected devices first, then by name
    std::unordered_map<std::string, Device*> byKey_;
    std::unordered_map<std::uint64_t, Device*> byInterface_;  // attached interfaces
    std::unique_ptr<HIDManager> manager_;  // declared last, so destroyed first: its callbacks use the members above
};

}  // namespace kovra
