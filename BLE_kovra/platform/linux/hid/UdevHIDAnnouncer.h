#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "BLE_kovra/platform/linux/hid/HIDPresence.h"
#include "BLE_kovra/platform/linux/hid/UdevHIDDevice.h"
#include "BLE_kovra/platform/linux/hid/UdevHIDNodes.h"
#include "BLE_kovra/platform/linux/loop/Lifetime.h"

namespace kovra {

class DelayedTask;
class MainQueue;

// Knows which HID interfaces have been announced, and announces what differs from that.
//
// A node is announced once a driver is bound to it, since drivers give devices their names, or `timeout` after it was
// first seen without one. An announced interface whose name or numbers have changed is taken back and announced again
// under the same number; so is one whose device goes and comes back while its node stays. That its driver goes, or is
// swapped, changes nothing. Looking twice does no more than looking once.
class UdevHIDAnnouncer {
  public:
    static constexpr std::chrono::milliseconds timeout{300};

    // `attached` and `removed` may destroy the announcer.
    struct Actions {
        std::function<void(const UdevHIDDevice&)> attached;
        std::function<void(const UdevHIDDevice&)> removed;
        std::function<void(const std::string& nodeName)> doubtful;  // its device may have gone or come back: look at it
    };

    UdevHIDAnnouncer(MainQueue& queue, udev* context, std::vector<std::unique_ptr<HIDPresence>> presences,
                     Actions actions);
    ~UdevHIDAnnouncer();
    UdevHIDAnnouncer(const UdevHIDAnnouncer&) = delete;
    UdevHIDAnnouncer& operator=(const UdevHIDAnnouncer&) = delete;

    // What a look does about an announced node that it does not find. A node is off the bus some milliseconds before
    // the kernel announces its removal, and the removal counts from its announcement. Where no announcement follows,
    // it counts after `timeout`: nobody's trackpad waits for an event that was lost.
    enum class IfGone { announceRemoval, awaitRemoval };

    // Compares the node, as it is now, with what was announced of it. Calls back from inside this call.
    void look(const std::string& nodeName, IfGone ifGone = IfGone::awaitRemoval);
    // Every node there is or was known to be: looking at each of them makes good for lost events.
    std::vector<std::string> everything() const;

  private:
    void examine(const std::string& nodeName, bool isOverdue, IfGone ifGone);
    void examineLater(const std::string& nodeName);
    HIDPresence::Answer presenceOf(const std::string& nodeName, const UdevHIDNode& node);
    void nodeIsGone(const std::string& nodeName);
    void deviceIsAway(const std::string& nodeName);
    void nodeIsThere(const std::string& nodeName, const UdevHIDDevice& device);

    MainQueue& queue_;
    UdevHIDNodes nodes_;
    const Actions actions_;
    std::vector<std::unique_ptr<HIDPresence>> presences_;
    std::vector<HIDPresence::Changes::Token> changes_;
    std::unordered_map<std::string, UdevHIDDevice> announced_;
    std::unordered_map<std::string, std::unique_ptr<DelayedTask>> pending_;  // nodes that are examined again when due
    Lifetime lifetime_;
};

}  // namespace kovra
