#pragma once

#include "BLE_kovra/platform/HotKeyService.h"

namespace kovra {

// Hot keys of the Carbon Event Manager. It delivers presses while the application runs, and passes none of them on to
// other programs.
class CarbonHotKeyService : public HotKeyService {
  public:
    // If several handlers are installed, only the last one is called.
    std::unique_ptr<Reference> installHandler(Handler handler) override;
    std::unique_ptr<Reference> registerHotKey(const HotKey& hotKey) override;
};

}  // namespace kovra
