#pragma once

#include <IOKit/hid/IOHIDDevice.h>

#include "BLE_kovra/platform/HIDManager.h"
#include "BLE_kovra/platform/macos/foundation/CFHandle.h"

namespace kovra {

// A HID device of IOKit. This object holds a reference to that device.
class IOKitHIDDevice : public HIDDevice {
  public:
    explicit IOKitHIDDevice(IOHIDDeviceRef device) : device_(CFHandle<IOHIDDeviceRef>::retained(device)) {}

    std::optional<std::uint64_t> registryEntryID() const override;
    std::uint64_t handle() const override;
    std::optional<std::int64_t> integerProperty(std::string_view name) const override;
    std::optional<std::string> stringProperty(std::string_view name) const override;

  private:
    CFHandle<IOHIDDeviceRef> device_;
};

}  // namespace kovra
