#pragma once

#include "BLE_kovra/platform/HotKeyService.h"

namespace kovra {

// Hot keys of the Carbon Event Manager. It delivers presses while the application runs, and hides them from the window
// in front. The registration is not exclusive: if another program registers the same hot key in the same way, both
// receive each press, and neither is told.
class CarbonHotKeyService : public HotKeyService {
  public:
    // If several handlers are installed, only the last one is called.
    std::unique_ptr<Reference> installHandler(Handler handler) override;
    std::unique_ptr<Reference> registerHotKey(const HotKey& hotKey) override;
};

}  // namespace kovra
