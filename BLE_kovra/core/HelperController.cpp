#include "BLE_kovra/core/HelperController.h"

#include "BLE_kovra/platform/FileSystem.h"
#include "BLE_kovra/platform/Platform.h"
#include "BLE_kovra/platform/SystemLog.h"

namespace kovra {

HelperController& HelperController::shared() {
    static HelperController instance(Platform::current().fileSystem, Platform::current().log);
    return instance;
}

void HelperController::set(bool on) {
    const std::string text = on ? "on" : "off";
    if (lastWritten_ == text && !hasFailed_) return;
    const Outcome written = files_.writeWholeFile(stateFile, text);
    hasFailed_ = !written;
    if (written) {
        lastWritten_ = text;
    } else {
        log_.log("ble-kovra: не удалось записать флаг (" + text + "): " + written.reason());
    }
}

}  // namespace kovra
