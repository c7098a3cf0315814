#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
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

// Watches every HID device and publishes who is here, one entry per device.
//
// A device's several interfaces share one key and count as one device; so do two identical mice. Both are intended.
// Losing the last interface publishes nothing for `disconnectGrace`: wireless mice drop out and return, and the
// trackpad must not flap meanwhile. A device once seen stays listed until the process ends.
class HIDMonitor : public std::enable_shared_from_this<HIDMonitor> {
  public:
    // From the removal of a device's last interface until it is shown disconnected.
    static constexpr std::chrono::seconds disconnectGrace{2};

    // Always owned by a shared_ptr: a grace period that outlives the monitor must be able to see that it is gone.
    static std::shared_ptr<HIDMonitor> create(HIDService& hid, MainQueue& queue, const Locale& locale,
                                              const L10n& texts);
    ~HIDMonitor();

    // Called with the whole list, connected devices first and by name among equals, from inside the handling of the
    // event that changed it.
    std::function<void(std::vector<HIDDeviceInfo>)> onDevicesChanged;

    // Begins to watch. Called once, after onDevicesChanged has been set; publishes nothing itself.
    void start();

    // An interface of the device is attached, or its grace period is running.
    bool isConnected(const std::string& key) const;

  private:
    HIDMonitor(HIDService& hid, MainQueue& queue, const Locale& locale, const L10n& texts);

    struct Named {
        std::string key;
        std::string name;
        std::string sortKey;  // of the name; made when the name changes, since it costs more than many comparisons
    };

    void added(const HIDDevice& device);
    void removedDevice(const HIDDevice& device);
    void scheduleDisconnect(const std::string& key);
    void publish();
    void setName(const std::string& key, std::string name);

    HIDService& hid_;
    MainQueue& queue_;
    const Locale& locale_;
    const L10n& texts_;

    std::unordered_map<std::uint64_t, std::string> interfaceKey_;       // attached interface -> its device
    std::unordered_map<std::string, std::set<std::uint64_t>> present_;  // device -> its attached interfaces
    std::vector<Named> names_;                                // every device ever seen, in the order of first sight
    std::unordered_map<std::string, std::size_t> nameIndex_;  // device -> its place in names_
    std::unordered_map<std::string, std::unique_ptr<DelayedTask>> pendingDisconnect_;  // grace periods now running
    std::unique_ptr<HIDManager> manager_;  // declared last, so destroyed first: it calls into the members above
};

}  // namespace kovra
