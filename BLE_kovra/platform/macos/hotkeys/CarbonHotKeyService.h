#pragma once

#include "BLE_kovra/platform/HotKeyService.h"

namespace kovra {

// Hot keys of the system's event manager, which delivers them while the application runs and passes none on.
class CarbonHotKeyService : public HotKeyService {
  public:
    // Where several are installed, the last one has the presses.
    std::unique_ptr<Reference> installHandler(Handler handler) override;
    std::unique_ptr<Reference> registerHotKey(const HotKey& hotKey) override;
};

}  // namespace kovra
