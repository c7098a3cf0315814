#pragma once

#include "BLE_kovra/platform/HotKeyService.h"
#include "BLE_kovra/platform/linux/hotkeys/HotKeyHandlers.h"
#include "BLE_kovra/platform/linux/x11/XConnection.h"

namespace kovra {

// Hot keys on X: the key is taken from all windows by its place on the keyboard. Takes Control + Option + T; gives null
// for any other.
class XcbHotKeyService : public HotKeyService {
  public:
    explicit XcbHotKeyService(XConnection& connection) : connection_(connection) {}

    std::unique_ptr<Reference> installHandler(Handler handler) override;
    std::unique_ptr<Reference> registerHotKey(const HotKey& hotKey) override;

  private:
    XConnection& connection_;
    HotKeyHandlers handlers_;
};

}  // namespace kovra
