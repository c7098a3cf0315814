#pragma once

#include <memory>

#include "BLE_kovra/platform/HIDManager.h"
#include "BLE_kovra/platform/linux/hid/UdevEvents.h"
#include "BLE_kovra/platform/linux/loop/Listeners.h"

namespace kovra {

class SystemBus;
class SystemLog;

// HID on Linux: managers over libudev. The bus, its loop and the log have to outlive them.
class UdevHIDService : public HIDService {
  public:
    UdevHIDService(SystemBus& bus, SystemLog& log, UdevSigns signs = {});

    std::unique_ptr<HIDManager> createManager() override;

    // For when events may have been missed, as when the machine has slept: each open manager compares what it has
    // announced with what is attached, and announces the differences.
    void resynchronize();

  private:
    SystemBus& bus_;
    SystemLog& log_;
    UdevSigns signs_;
    Listeners<> managers_;
};

}  // namespace kovra
