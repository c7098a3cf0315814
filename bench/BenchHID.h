#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "BLE_kovra/platform/HIDManager.h"
#include "bench/DeviceNames.h"

namespace kovra {

// A device whose properties are in memory, so that reading them costs almost no time.
class BenchDevice : public HIDDevice {
  public:
    BenchDevice(std::uint64_t number, std::string name) : number_(number), name_(std::move(name)) {}

    std::optional<std::uint64_t> registryEntryID() const override { return number_; }
    std::uint64_t handle() const override { return number_; }
    std::optional<std::int64_t> integerProperty(std::string_view name) const override {
        if (name == "VendorID") return 1000 + static_cast<std::int64_t>(number_);
        if (name == "ProductID") return static_cast<std::int64_t>(number_);
        return std::nullopt;
    }
    std::optional<std::string> stringProperty(std::string_view name) const override {
        return name == "Product" ? std::optional(name_) : std::nullopt;
    }

  private:
    std::uint64_t number_;
    std::string name_;
};

inline std::vector<BenchDevice> benchDevices(std::size_t count) {
    std::vector<BenchDevice> devices;
    devices.reserve(count);
    for (std::string& name : bench::deviceNames(count)) devices.emplace_back(devices.size() + 1, std::move(name));
    return devices;
}

// Keeps the callbacks that the monitor registers, so that the benchmark can call them.
class BenchHID : public HIDService {
  public:
    HIDManager::Callback attached;
    HIDManager::Callback removed;

    std::unique_ptr<HIDManager> createManager() override { return std::make_unique<Manager>(*this); }

  private:
    class Manager : public HIDManager {
      public:
        explicit Manager(BenchHID& hid) : hid_(hid) {}
        void registerMatchingCallback(Callback callback) override { hid_.attached = std::move(callback); }
        void registerRemovalCallback(Callback callback) override { hid_.removed = std::move(callback); }
        void open() override {}

      private:
        BenchHID& hid_;
    };
};

}  // namespace kovra
