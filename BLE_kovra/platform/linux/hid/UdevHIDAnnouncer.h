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

// Announces HID interfaces as attached or removed. It compares the current nodes with the interfaces that it has
// announced, and announces the differences.
//
// A node is announced once a driver is bound to it, since drivers give devices their names. Without a driver it is
// announced `timeout` after it was first seen. udevd may report the driver only after it has processed the device's
// children, a quarter of a second late; the announcer therefore also looks by itself, soon at first. An interface whose
// name or numbers change is announced as removed and as attached again, with the same registry entry ID. The same
// happens if its device disconnects and reconnects while the node remains. Unbinding or replacing its driver alone is
// not announced. Checking a node twice has the same effect as checking it once.
class UdevHIDAnnouncer {
  public:
    static constexpr std::chrono::milliseconds timeout{300};
    // How long after a node was first seen it is examined again. The time doubles until it reaches `timeout`.
    static constexpr std::chrono::milliseconds firstLook{2};

    // `attached` and `removed` may destroy the announcer. `recheck` is called when the presence of the node's device
    // may have changed; the owner must then call check().
    struct Actions {
        std::function<void(const UdevHIDDevice&)> attached;
        std::function<void(const UdevHIDDevice&)> removed;
        std::function<void(const std::string& nodeName)> recheck;
    };

    UdevHIDAnnouncer(MainQueue& queue, udev* context, std::vector<std::unique_ptr<HIDPresence>> presences,
                     Actions actions);
    ~UdevHIDAnnouncer();
    UdevHIDAnnouncer(const UdevHIDAnnouncer&) = delete;
    UdevHIDAnnouncer& operator=(const UdevHIDAnnouncer&) = delete;

    // What check() does if an announced node is missing. The kernel removes a node from the bus some milliseconds
    // before it sends the event of the removal, and the removal counts from that event. If no event follows, the
    // removal counts after `timeout`, so that a lost event does not leave the trackpad muted.
    enum class IfMissing { announceRemoval, awaitRemoval };

    // Compares the current node with what has been announced. Calls the functions in `Actions` from inside this call,
    // or later from the queue.
    void check(const std::string& nodeName, IfMissing ifMissing = IfMissing::awaitRemoval);
    // All nodes that exist, are announced, or are to be examined later. Checking each of them finds the changes whose
    // events were lost. Those that exist are missing if they cannot be listed now.
    struct AllNodes {
        std::vector<std::string> names;
        bool isComplete;
    };
    AllNodes allNodes() const;

  private:
    void examine(const std::string& nodeName, bool isOverdue, IfMissing ifMissing);
    void examineLater(const std::string& nodeName);
    void examineAfter(std::chrono::milliseconds waited, const std::string& nodeName);
    HIDPresence::Answer presenceOf(const std::string& nodeName, const UdevHIDNode& node);
    void nodeRemoved(const std::string& nodeName);
    void deviceAbsent(const std::string& nodeName);
    void nodePresent(const std::string& nodeName, const UdevHIDDevice& device);

    MainQueue& queue_;
    UdevHIDNodes nodes_;
    const Actions actions_;
    std::vector<std::unique_ptr<HIDPresence>> presences_;
    std::vector<HIDPresence::Changes::Token> changes_;
    std::unordered_map<std::string, UdevHIDDevice> announced_;
    std::unordered_map<std::string, std::unique_ptr<DelayedTask>> pending_;  // nodes to examine again later
    Lifetime lifetime_;
};

}  // namespace kovra
