#include "BLE_kovra/platform/linux/hotkeys/XcbHotKeyService.h"

#include <linux/input-event-codes.h>

#include <functional>
#include <utility>

#include "BLE_kovra/platform/linux/hotkeys/XKeyGrab.h"

namespace kovra {

namespace {

// The X server counts the kernel's key codes from here.
constexpr xcb_keycode_t firstKeycode = 8;

class Registered : public HotKeyService::Reference {
  public:
    Registered(XConnection& connection, xcb_keycode_t key, std::function<void()> pressed)
        : grab_(connection, key, std::move(pressed)) {}

  private:
    XKeyGrab grab_;
};

}  // namespace

std::unique_ptr<HotKeyService::Reference> XcbHotKeyService::installHandler(Handler handler) {
    return handlers_.install(std::move(handler));
}

std::unique_ptr<HotKeyService::Reference> XcbHotKeyService::registerHotKey(const HotKey& hotKey) {
    if (hotKey.keyCode != HotKey::ansiT || hotKey.modifiers != (HotKey::controlKey | HotKey::optionKey)) return nullptr;
    return std::make_unique<Registered>(connection_, firstKeycode + KEY_T, [this] { handlers_.pressed(); });
}

}  // namespace kovra
