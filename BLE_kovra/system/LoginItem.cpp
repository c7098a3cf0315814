#include "BLE_kovra/system/LoginItem.h"

#include "BLE_kovra/platform/LoginService.h"
#include "BLE_kovra/platform/SystemLog.h"

namespace kovra {

void LoginItem::toggle(LoginService& service, SystemLog& log) {
    const bool isOn = service.status() == LoginStatus::enabled;
    const Outcome toggled = isOn ? service.unregisterApplication() : service.registerApplication();
    if (!toggled) log.log("ble-kovra: не удалось переключить автозапуск: " + toggled.reason());
}

}  // namespace kovra
