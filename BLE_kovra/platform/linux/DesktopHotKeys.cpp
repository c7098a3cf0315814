#include "BLE_kovra/platform/linux/DesktopHotKeys.h"

#include "BLE_kovra/platform/linux/XcbHotKeyService.h"

namespace kovra {

namespace {

class NoHotKeys : public HotKeyService {
  public:
    std::unique_ptr<Reference> installHandler(Handler) override { return nullptr; }
    std::unique_ptr<Reference> registerHotKey(const HotKey&) override { return nullptr; }
};

}  // namespace

std::unique_ptr<HotKeyService> makeHotKeyService(SdEventLoop& loop, XConnection* connection) {
    if (connection != nullptr) return std::make_unique<XcbHotKeyService>(loop, *connection);
    return std::make_unique<NoHotKeys>();
}

}  // namespace kovra
