#pragma once

#include "BLE_kovra/platform/Alert.h"

namespace kovra {

// Alerts as AppKit runs them. One that is open does not stand in the way of quitting; it goes with the process.
//
// Not to be run from a block of the main queue, whose other blocks would then wait for the answer. From a menu's action
// and while the application launches they go on.
class AppKitAlertPresenter : public AlertPresenter {
  public:
    AlertResponse runModal(const Alert& alert) override;
};

}  // namespace kovra
