#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "BLE_kovra/platform/HIDManager.h"

namespace kovra {

// What one HID interface said of itself when its node in sysfs was read: a value, good for as long as it is kept.
//
// The node's name is BBBB:VVVV:PPPP.NNNN; the hexadecimal number that ends it counts the interfaces that came since the
// system started and is the registry number. The vendor and the product come from HID_ID (bus:vendor:product, also
// hexadecimal). A name from HID_NAME that is empty, or that the kernel made up for want of one, is no name.
class UdevHIDDevice : public HIDDevice {
  public:
    UdevHIDDevice(std::string_view nodeName, std::optional<std::string_view> hidID,
                  std::optional<std::string_view> hidName);

    std::optional<std::uint64_t> registryEntryID() const override { return number_; }
    // Made from the node's name, and never equal to a registry number: those have 32 bits.
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
