#include "BLE_kovra/platform/linux/hotkeys/DesktopHotKeys.h"

#include "BLE_kovra/platform/linux/hotkeys/PortalHotKeyService.h"
#include "BLE_kovra/platform/linux/hotkeys/XcbHotKeyService.h"

namespace kovra {

namespace {

class NoHotKeys : public HotKeyService {
  public:
    std::unique_ptr<Reference> installHandler(Handler) override { return nullptr; }
    std::unique_ptr<Reference> registerHotKey(const HotKey&) override { return nullptr; }
};

}  // namespace

std::unique_ptr<HotKeyService> makeHotKeyService(Desktop desktop, XConnection* connection, SessionBus& bus) {
    if (desktop == Desktop::wayland) return std::make_unique<PortalHotKeyService>(bus);
    if (connection != nullptr) return std::make_unique<XcbHotKeyService>(*connection);
    return std::make_unique<NoHotKeys>();
}

}  // namespace kovra
