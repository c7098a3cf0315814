#pragma once

#include "BLE_kovra/platform/HotKeyService.h"
#include "BLE_kovra/platform/linux/bus/SessionBus.h"
#include "BLE_kovra/platform/linux/hotkeys/HotKeyHandlers.h"

namespace kovra {

// Hot keys on Wayland, where only the desktop itself sees all keys: its portal is asked for Control + Option + T, by
// the letter, since portals know no places. Gives null for any other key; a refusal stays unnoticed.
class PortalHotKeyService : public HotKeyService {
  public:
    explicit PortalHotKeyService(SessionBus& bus) : bus_(bus) {}

    std::unique_ptr<Reference> installHandler(Handler handler) override;
    std::unique_ptr<Reference> registerHotKey(const HotKey& hotKey) override;

  private:
    SessionBus& bus_;
    HotKeyHandlers handlers_;
};

}  // namespace kovra
