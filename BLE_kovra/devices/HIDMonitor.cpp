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
    const auto interfaces = present_.find(key);
    if (interfaces != present_.end() && !interfaces->second.empty()) return true;
    return pendingDisconnect_.contains(key);
}

void HIDMonitor::added(const HIDDevice& device) {
    const std::uint64_t id = interfaceID(device);
    const std::string key = userKey(device, texts_);
    interfaceKey_[id] = key;
    present_[key].insert(id);
    setName(key, displayName(device, texts_));
    if (const auto pending = pendingDisconnect_.find(key); pending != pendingDisconnect_.end()) {
        pending->second->cancel();
        pendingDisconnect_.erase(pending);
    }
    publish();
}

void HIDMonitor::removedDevice(const HIDDevice& device) {
    const auto attached = interfaceKey_.find(interfaceID(device));
    if (attached == interfaceKey_.end()) return;
    const std::uint64_t id = attached->first;
    const std::string key = std::move(attached->second);
    interfaceKey_.erase(attached);
    std::set<std::uint64_t>& interfaces = present_[key];
    interfaces.erase(id);
    if (interfaces.empty())
        scheduleDisconnect(key);
    else
        publish();
}

void HIDMonitor::scheduleDisconnect(const std::string& key) {
    std::unique_ptr<DelayedTask>& pending = pendingDisconnect_[key];
    if (pending) pending->cancel();
    pending = queue_.asyncAfter(disconnectGrace, [weak = weak_from_this(), key] {
        const auto monitor = weak.lock();
        if (!monitor) return;
        monitor->pendingDisconnect_.erase(key);
        monitor->publish();
    });
}

void HIDMonitor::setName(const std::string& key, std::string name) {
    const auto [index, isNew] = nameIndex_.try_emplace(key, names_.size());
    if (isNew) names_.push_back({key, {}, {}});
    Named& named = names_[index->second];
    if (!isNew && named.name == name) return;
    named.name = std::move(name);
    named.sortKey = locale_.sortKey(named.name);
}

void HIDMonitor::publish() {
    if (!onDevicesChanged) return;

    struct Entry {
        const Named* device;
        bool connected;
    };
    std::vector<Entry> order;
    order.reserve(names_.size());
    for (const Named& named : names_) order.push_back({&named, isConnected(named.key)});
    std::stable_sort(order.begin(), order.end(), [&](const Entry& a, const Entry& b) {
        if (a.connected != b.connected) return a.connected;
        return locale_.isAscending(a.device->sortKey, b.device->sortKey);
    });

    std::vector<HIDDeviceInfo> list;
    list.reserve(order.size());
    for (const Entry& entry : order) list.push_back({entry.device->key, entry.device->name, entry.connected});
    onDevicesChanged(std::move(list));
}

}  // namespace kovra
