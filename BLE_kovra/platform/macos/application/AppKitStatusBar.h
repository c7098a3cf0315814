#pragma once

#include <memory>

#include "BLE_kovra/platform/StatusBar.h"

namespace kovra {

// The status items in the menu bar.
class AppKitStatusBar : public StatusBar {
  public:
    std::unique_ptr<StatusItem> statusItem(double length) override;
};

}  // namespace kovra
