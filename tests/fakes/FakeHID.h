#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "BLE_kovra/platform/HIDManager.h"
#include "BLE_kovra/platform/MainQueue.h"

namespace kovra {

// A device to attach: the number of its interfaces and the properties that all of them share.
struct DeviceDescription {
    std::optional<std::string> product;
    std::optional<std::int64_t> vendorID = 0x046D;
    std::optional<std::int64_t> productID = 0xC077;
    int interfaceCount = 1;
    bool registered = true;  // whether the interfaces have registry numbers

    DeviceDescription interfaces(int count) const {
        DeviceDescription changed = *this;
        changed.interfaceCount = count;
        return changed;
    }
    DeviceDescription ids(std::optional<std::int64_t> vendor, std::optional<std::int64_t> productNumber) const {
        DeviceDescription changed = *this;
        changed.vendorID = vendor;
        changed.productID = productNumber;
        return changed;
    }
    DeviceDescription withoutRegistryEntry() const {
        DeviceDescription changed = *this;
        changed.registered = false;
        return changed;
    }
    // Returns the identity key of this device; `unknown` replaces a missing name.
    std::string key(const std::string& unknown = "Unknown device") const {
        return product.value_or(unknown) + "#" + std::to_string(vendorID.value_or(0)) + ":" +
               std::to_string(productID.value_or(0));
    }
};

inline DeviceDescription aMouse(std::string product) { return {.product = std::move(product)}; }
inline DeviceDescription aNamelessDevice() { return {}; }

// The HID service of a system without hardware. The number of a detached interface is not reused.
//
// Each callback runs in a block of its own on the queue, as in a real event loop. After deliverAtOnce() callbacks run
// inside the function that causes them. Inside open() they run only after deliverInsideOpen(), which no system does.
class FakeHID : public HIDService {
  public:
    using Plugged = std::vector<std::uint64_t>;  // the interface numbers of one attached device

    explicit FakeHID(MainQueue& queue) : queue_(queue) {}

    void deliverAtOnce() { atOnce_ = true; }
    void deliverInsideOpen() { insideOpen_ = true; }

    std::unique_ptr<HIDManager> createManager() override;

    Plugged attach(const DeviceDescription& device) {
        Plugged plugged;
        for (int i = 0; i < device.interfaceCount; ++i) plugged.push_back(attachInterface(device));
        return plugged;
    }
    void detach(const Plugged& plugged) {
        for (const std::uint64_t number : plugged) detachInterface(number);
    }

    std::uint64_t attachInterface(const DeviceDescription& device) {
        const std::uint64_t number = nextNumber_++;
        attached_.emplace(number, device);
        deliver(true, number, device);
        return number;
    }
    void detachInterface(std::uint64_t number) {
        const auto found = attached_.extract(number);
        if (!found.empty()) deliver(false, number, found.mapped());
    }
    // Reports a removal without an attachment, as the system may do.
    void detachUnknown(std::uint64_t number) { deliver(false, number, aNamelessDevice()); }

    // Reports an attached interface a second time, as the system may do.
    void attachAgain(std::uint64_t number) {
        if (const auto found = attached_.find(number); found != attached_.end()) deliver(true, number, found->second);
    }
    // Reports that this interface is now one of that device, without a removal in between.
    void attachAgainAs(std::uint64_t number, const DeviceDescription& device) {
        attached_.insert_or_assign(number, device);
        deliver(true, number, device);
    }
    // Renames the device as a driver does: reports the removal and a new attachment of the interface with this number.
    void rename(std::uint64_t number, const std::string& product) {
        const auto found = attached_.find(number);
        if (found == attached_.end()) return;
        const DeviceDescription before = found->second;
        found->second.product = product;
        const DeviceDescription after = found->second;
        deliver(false, number, before);
        deliver(true, number, after);
    }

    int managersCreated() const { return managersCreated_; }
    bool isOpen() const { return live_ != nullptr && open_; }

  private:
    class Device;
    class Manager;

    void deliver(bool isAttachment, std::uint64_t number, const DeviceDescription& device) {
        if (!isOpen()) return;
        const auto call = [this, manager = generation_, isAttachment, number, device] {
            if (isOpen() && manager == generation_) callBack(isAttachment, number, device);
        };
        if (atOnce_)
            call();
        else
            queue_.async(call);
    }
    void callBack(bool isAttachment, std::uint64_t number, const DeviceDescription& device);

    MainQueue& queue_;
    std::map<std::uint64_t, DeviceDescription> attached_;
    std::uint64_t nextNumber_ = 1;
    bool atOnce_ = false;
    bool insideOpen_ = false;
    int managersCreated_ = 0;
    Manager* live_ = nullptr;
    bool open_ = false;
    int generation_ = 0;
};

class FakeHID::Device : public HIDDevice {
  public:
    Device(std::uint64_t number, const DeviceDescription& description) : number_(number), description_(description) {}

    std::optional<std::uint64_t> registryEntryID() const override {
        return description_.registered ? std::optional(number_) : std::nullopt;
    }
    // Handles are far from the registry numbers, so that a test can tell one from the other.
    std::uint64_t handle() const override { return number_ + 0x7F0000000000U; }
    std::optional<std::int64_t> integerProperty(std::string_view name) const override {
        if (name == "VendorID") return description_.vendorID;
        if (name == "ProductID") return description_.productID;
        return std::nullopt;
    }
    std::optional<std::string> stringProperty(std::string_view name) const override {
        return name == "Product" ? description_.product : std::nullopt;
    }

  private:
    std::uint64_t number_;
    const DeviceDescription& description_;
};

class FakeHID::Manager : public HIDManager {
  public:
    explicit Manager(FakeHID& hid) : hid_(hid) {
        hid_.live_ = this;
        hid_.open_ = false;
        ++hid_.generation_;
        ++hid_.managersCreated_;
    }
    ~Manager() override {
        if (hid_.live_ == this) hid_.live_ = nullptr;
    }
    void registerMatchingCallback(Callback attached) override { attached_ = std::move(attached); }
    void registerRemovalCallback(Callback removed) override { removed_ = std::move(removed); }
    void open() override {
        hid_.open_ = true;
        const auto present = hid_.attached_;
        for (const auto& [number, device] : present) {
            if (hid_.insideOpen_) {
                hid_.callBack(true, number, device);
                continue;
            }
            hid_.queue_.async([&hid = hid_, generation = hid_.generation_, number = number] {
                const auto still = hid.attached_.find(number);
                if (still == hid.attached_.end() || !hid.isOpen() || generation != hid.generation_) return;
                hid.callBack(true, number, still->second);
            });
        }
    }

    Callback attached_;
    Callback removed_;

  private:
    FakeHID& hid_;
};

inline std::unique_ptr<HIDManager> FakeHID::createManager() { return std::make_unique<Manager>(*this); }

inline void FakeHID::callBack(bool isAttachment, std::uint64_t number, const DeviceDescription& device) {
    const DeviceDescription copy = device;
    const Device handle(number, copy);
    const HIDManager::Callback callback = isAttachment ? live_->attached_ : live_->removed_;
    if (callback) callback(handle);
}

}  // namespace kovra
