#include "BLE_kovra/platform/linux/hid/UdevHIDService.h"

#include <utility>
#include <vector>

#include "BLE_kovra/platform/linux/bus/SystemBus.h"
#include "BLE_kovra/platform/linux/hid/BatteryHIDPresence.h"
#include "BLE_kovra/platform/linux/hid/BluezHIDPresence.h"
#include "BLE_kovra/platform/linux/hid/UdevHIDManager.h"

namespace kovra {

UdevHIDService::UdevHIDService(SystemBus& bus, SystemLog& log, UdevdPaths udevd)
    : bus_(bus), log_(log), udevd_(std::move(udevd)) {}

std::unique_ptr<HIDManager> UdevHIDService::createManager() {
    std::vector<std::unique_ptr<HIDPresence>> presences;
    presences.push_back(std::make_unique<BatteryHIDPresence>(bus_.loop(), udevd_));
    presences.push_back(std::make_unique<BluezHIDPresence>(bus_));
    return std::make_unique<UdevHIDManager>(bus_.loop(), log_, udevd_, std::move(presences), managers_);
}

void UdevHIDService::resynchronize() { managers_.call(); }

}  // namespace kovra
