#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "BLE_kovra/platform/HIDManager.h"

namespace kovra {

// The properties of one HID interface as they were when its node in sysfs was read.
//
// The node's name is BBBB:VVVV:PPPP.NNNN. The hexadecimal number after the dot counts the interfaces since the system
// started; it is the registry entry ID. Vendor and product are read from HID_ID (bus:vendor:product, also hexadecimal).
// An empty HID_NAME counts as no name. So does "HID vvvv:pppp", which the kernel writes for a device without a name.
class UdevHIDDevice : public HIDDevice {
  public:
    UdevHIDDevice(std::string_view nodeName, std::optional<std::string_view> hidID,
                  std::optional<std::string_view> hidName);

    std::optional<std::uint64_t> registryEntryID() const override { return number_; }
    // A number derived from the node's name. It never equals a registry entry ID, since those have 32 bits.
    std::uint64_t handle() const override { return handle_; }
    std::optional<std::int64_t> integerProperty(std::string_view name) const override;
    std::optional<std::string> stringProperty(std::string_view name) const override;

    bool operator==(const UdevHIDDevice& other) const;

  private:
    std::uint64_t handle_;
    std::optional<std::uint64_t> number_;
    std::optional<std::int64_t> vendor_;
    std::optional<std::int64_t> product_;
    std::optional<std::string> name_;  // valid UTF-8
};

}  // namespace kovra
