#include "BLE_kovra/platform/linux/hotkeys/PortalHotKeyService.h"

#include <string>
#include <utility>

#include "BLE_kovra/platform/linux/hotkeys/PortalShortcut.h"

namespace kovra {

namespace {

class Registered : public HotKeyService::Reference {
  public:
    template <typename... Arguments>
    explicit Registered(Arguments&&... arguments) : shortcut_(std::forward<Arguments>(arguments)...) {}

  private:
    PortalShortcut shortcut_;
};

// The same at every start: desktops remember by it what the user has made of the key.
std::string identifier(const HotKey& hotKey) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) text += static_cast<char>(hotKey.signature >> shift & 0xFF);
    return text + "-" + std::to_string(hotKey.number);
}

}  // namespace

std::unique_ptr<HotKeyService::Reference> PortalHotKeyService::installHandler(Handler handler) {
    return handlers_.install(std::move(handler));
}

std::unique_ptr<HotKeyService::Reference> PortalHotKeyService::registerHotKey(const HotKey& hotKey) {
    if (hotKey.keyCode != HotKey::ansiT || hotKey.modifiers != (HotKey::controlKey | HotKey::optionKey)) return nullptr;
    PortalShortcut::Wish wish{.id = identifier(hotKey), .description = "BLE-kovra", .trigger = "CTRL+ALT+t"};
    return std::make_unique<Registered>(bus_, std::move(wish), [this] { handlers_.pressed(); });
}

}  // namespace kovra
