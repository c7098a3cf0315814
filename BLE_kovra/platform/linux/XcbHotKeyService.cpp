#include "BLE_kovra/platform/linux/XcbHotKeyService.h"

#include <linux/input-event-codes.h>

#include <utility>

#include "BLE_kovra/platform/linux/XKeyGrab.h"

namespace kovra {

namespace {

// The X server counts the kernel's key codes from here.
constexpr xcb_keycode_t firstKeycode = 8;

class Registered : public HotKeyService::Reference {
  public:
    explicit Registered(std::unique_ptr<XKeyGrab> grab) : grab_(std::move(grab)) {}

  private:
    std::unique_ptr<XKeyGrab> grab_;
};

}  // namespace

std::unique_ptr<HotKeyService::Reference> XcbHotKeyService::installHandler(Handler handler) {
    return handlers_.install(std::move(handler));
}

std::unique_ptr<HotKeyService::Reference> XcbHotKeyService::registerHotKey(const HotKey& hotKey) {
    if (hotKey.keyCode != HotKey::ansiT || hotKey.modifiers != (HotKey::controlKey | HotKey::optionKey)) return nullptr;
    auto grab = XKeyGrab::take(loop_, connection_, firstKeycode + KEY_T, [this] { handlers_.pressed(); });
    return grab ? std::make_unique<Registered>(std::move(grab)) : nullptr;
}

}  // namespace kovra
