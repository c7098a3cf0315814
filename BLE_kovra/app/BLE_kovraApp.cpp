#include "BLE_kovra/app/BLE_kovraApp.h"

#include "BLE_kovra/app/AppDelegate.h"
#include "BLE_kovra/core/HelperController.h"
#include "BLE_kovra/l10n/L10n.h"
#include "BLE_kovra/platform/Platform.h"
#include "BLE_kovra/system/GlobalHotkey.h"

namespace kovra {

BLE_kovraApp::BLE_kovraApp(const Platform& platform)
    : appDelegate_(AppDelegate::create(platform, AppState::shared(), HelperController::shared(), GlobalHotkey::shared(),
                                       L10n::shared())) {}

void BLE_kovraApp::main(const Platform& platform) {
    Platform::install(platform);
    const BLE_kovraApp app(platform);
    platform.application.run(*app.appDelegate_);
}

const char* BLE_kovraApp::flagFile() { return HelperController::stateFile; }

}  // namespace kovra
