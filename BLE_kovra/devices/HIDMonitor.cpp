#include "BLE_kovra/devices/HIDMonitor.h"

#include <algorithm>
#include <utility>

#include "BLE_kovra/devices/DeviceIdentity.h"
#include "BLE_kovra/platform/HIDManager.h"
#include "BLE_kovra/platform/Locale.h"
#include "BLE_kovra/platform/MainQueue.h"

namespace kovra {

std::shared_ptr<HIDMonitor> HIDMonitor::create(HIDService& hid, MainQueue& queue, const Locale& locale,
                                               const L10n& texts) {
    return std::shared_ptr<HIDMonitor>(new HIDMonitor(hid, queue, locale, texts));
}

HIDMonitor::HIDMonitor(HIDService& hid, MainQueue& queue, const Locale& locale, const L10n& texts)
    : hid_(hid), queue_(queue), locale_(locale), texts_(texts) {}

HIDMonitor::~HIDMonitor() = default;

void HIDMonitor::start() {
    manager_ = hid_.createManager();
    manager_->registerMatchingCallback([this](const HIDDevice& device) { added(device); });
    manager_->registerRemovalCallback([this](const HIDDevice& device) { removedDevice(device); });
    manager_->open();
}

bool HIDMonitor::isConnected(const std::string& key) const {
    const auto found = byKey_.find(key);
    return found != byKey_.end() && found->second->isConnected();
}

bool HIDMonitor::isInGrace(const std::string& key) const {
    const auto found = byKey_.find(key);
    return found != byKey_.end() && found->second->pendingDisconnect != nullptr;
}

void HIDMonitor::added(const HIDDevice& device) {
    Device& added = deviceOf(userKey(device, texts_));
    const std::uint64_t id = interfaceID(device);
    byInterface_[id] = &added;
    added.present.insert(id);
    setName(added, displayName(device, texts_));
    if (added.pendingDisconnect) std::exchange(added.pendingDisconnect, nullptr)->cancel();
    placeInOrder(added);
    publish();
}

void HIDMonitor::removedDevice(const HIDDevice& device) {
    const auto attached = byInterface_.find(interfaceID(device));
    if (attached == byInterface_.end()) return;
    Device& removed = *attached->second;
    removed.present.erase(attached->first);
    byInterface_.erase(attached);
    if (removed.present.empty())
        scheduleDisconnect(removed);
    else
        publish();
}

void HIDMonitor::scheduleDisconnect(Device& device) {
    if (device.pendingDisconnect) device.pendingDisconnect->cancel();
    device.pendingDisconnect = queue_.asyncAfter(disconnectGrace, [weak = weak_from_this(), &device] {
        const auto monitor = weak.lock();
        if (!monitor) return;
        device.pendingDisconnect.reset();
        monitor->placeInOrder(device);
        monitor->publish();
    });
}

HIDMonitor::Device& HIDMonitor::deviceOf(const std::string& key) {
    Device*& device = byKey_[key];
    if (device == nullptr) device = &devices_.emplace_back(Device{key, devices_.size()});
    return *device;
}

void HIDMonitor::setName(Device& device, std::string name) const {
    if (device.name == name && !device.sortKey.empty()) return;
    device.name = std::move(name);
    device.sortKey = locale_.sortKey(device.name);
}

// Moves this device to its place in `order_`. All others are in order already, because only one device changes at a
// time.
void HIDMonitor::placeInOrder(const Device& device) {
    const auto precedes = [this](const Device* one, const Device* other) {
        if (one->isConnected() != other->isConnected()) return one->isConnected();
        if (locale_.isAscending(one->sortKey, other->sortKey)) return true;
        return !locale_.isAscending(other->sortKey, one->sortKey) && one->number < other->number;
    };
    std::erase(order_, &device);
    order_.insert(std::upper_bound(order_.begin(), order_.end(), &device, precedes), &device);
}

void HIDMonitor::publish() {
    if (!onDevicesChanged) return;
    std::vector<HIDDeviceInfo> list;
    list.reserve(order_.size());
    for (const Device* device : order_) list.push_back({device->key, device->name, device->isConnected()});
    onDevicesChanged(std::move(list));
}

}  // namespace kovra
