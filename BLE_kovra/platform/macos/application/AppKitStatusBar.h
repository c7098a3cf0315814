#pragma once

#include <memory>

#include "BLE_kovra/platform/StatusBar.h"

namespace kovra {

// The menu bar with its status items.
class AppKitStatusBar : public StatusBar {
  public:
    std::unique_ptr<StatusItem> statusItem(double length) override;
};

}  // namespace kovra
