#include "BLE_kovra/system/DriverSetup.h"

#include "BLE_kovra/l10n/L10n.h"
#include "BLE_kovra/platform/Alert.h"
#include "BLE_kovra/platform/Application.h"
#include "BLE_kovra/system/DriverActivator.h"

namespace kovra {

void DriverSetup::showExplanation(Application& application, AlertPresenter& alerts, const DriverActivator& driver,
                                  const L10n& texts) {
    const Alert explanation{
        texts.s("driver.title"), texts.s("driver.body"), {texts.s("driver.activate"), texts.s("driver.later")}};
    application.activateIgnoringOtherApps();
    if (alerts.runModal(explanation) == AlertResponse::firstButton) driver.activate(true);
}

}  // namespace kovra
