#pragma once

#include <memory>

#include "BLE_kovra/platform/HIDManager.h"
#include "BLE_kovra/platform/linux/hid/UdevHIDWatcher.h"

namespace kovra {

class SystemBus;
class SystemLog;

// HID on Linux: managers over libudev. The bus, its loop and the log have to outlive them.
class UdevHIDService : public HIDService {
  public:
    UdevHIDService(SystemBus& bus, SystemLog& log, UdevSigns signs = {});

    std::unique_ptr<HIDManager> createManager() override;

    // For when events may have been missed, as when the machine has slept: the manager made last, if it is still there
    // and open, compares what it has announced with what is attached, and tells of each difference.
    void resynchronize();

  private:
    SystemBus& bus_;
    SystemLog& log_;
    UdevSigns signs_;
    std::weak_ptr<UdevHIDWatcher> live_;
};

}  // namespace kovra
