#pragma once

#include <memory>

#include "BLE_kovra/platform/StatusBar.h"

namespace kovra {

// The menu bar's end where programs have their items.
class AppKitStatusBar : public StatusBar {
  public:
    std::unique_ptr<StatusItem> statusItem(double length) override;
};

}  // namespace kovra
