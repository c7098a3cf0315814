#pragma once

#include <memory>

#include "BLE_kovra/platform/HIDManager.h"
#include "BLE_kovra/platform/linux/hid/UdevEvents.h"
#include "BLE_kovra/platform/linux/loop/Listeners.h"

namespace kovra {

class SystemBus;
class SystemLog;

// Creates managers that use libudev. The bus, its loop and the log must outlive them.
class UdevHIDService : public HIDService {
  public:
    UdevHIDService(SystemBus& bus, SystemLog& log, UdevdPaths udevd = {});

    std::unique_ptr<HIDManager> createManager() override;

    // Call this function when events may have been missed, for example after the machine has resumed from sleep. Each
    // open manager compares the devices that it has announced with those that are attached, and announces the
    // differences.
    void resynchronize();

  private:
    SystemBus& bus_;
    SystemLog& log_;
    UdevdPaths udevd_;
    Listeners<> managers_;
};

}  // namespace kovra
