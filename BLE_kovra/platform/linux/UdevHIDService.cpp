#include "BLE_kovra/platform/linux/UdevHIDService.h"

#include <utility>

#include "BLE_kovra/platform/linux/UdevHIDManager.h"

namespace kovra {

UdevHIDService::UdevHIDService(SdEventLoop& loop, SystemLog& log, UdevHIDSigns signs)
    : loop_(loop), log_(log), signs_(std::move(signs)) {}

std::unique_ptr<HIDManager> UdevHIDService::createManager() {
    auto watcher = std::make_shared<UdevHIDWatcher>(loop_, log_, signs_);
    live_ = watcher;
    return std::make_unique<UdevHIDManager>(std::move(watcher));
}

void UdevHIDService::resynchronize() {
    if (const auto watcher = live_.lock()) watcher->resynchronize();
}

}  // namespace kovra
