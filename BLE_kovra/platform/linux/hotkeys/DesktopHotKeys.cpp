#include "BLE_kovra/platform/linux/hotkeys/DesktopHotKeys.h"

#include <linux/input-event-codes.h>

#include <string>
#include <utility>

#include "BLE_kovra/platform/linux/hotkeys/PortalShortcut.h"
#include "BLE_kovra/platform/linux/hotkeys/XKeyGrab.h"

namespace kovra {

namespace {

// The X server adds this number to the kernel's key codes.
constexpr xcb_keycode_t firstKeycode = 8;

class Installed : public HotKeyService::Reference {
  public:
    explicit Installed(Listeners<>::Token token) : token_(std::move(token)) {}

  private:
    Listeners<>::Token token_;
};

// Returns an identifier that is the same at every start, because desktops store the user's choice of key under it.
std::string identifier(const HotKey& hotKey) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) text += static_cast<char>(hotKey.signature >> shift & 0xFF);
    return text + "-" + std::to_string(hotKey.number);
}

}  // namespace

DesktopHotKeys DesktopHotKeys::onX(XConnection& connection) {
    return DesktopHotKeys([&connection](const HotKey&, Reports reports) {
        const auto held = [changed = std::move(reports.changed)](HotKeyState::Holder holder) { changed({holder, ""}); };
        return std::make_unique<XKeyGrab>(connection, firstKeycode + KEY_T, std::move(reports.pressed), held);
    });
}

// The key is named by its letter, since portals cannot identify a key by its position.
DesktopHotKeys DesktopHotKeys::onPortal(SessionBus& bus) {
    return DesktopHotKeys([&bus](const HotKey& hotKey, Reports reports) {
        PortalShortcut::Description key{
            .id = identifier(hotKey), .text = std::move(reports.description), .trigger = "CTRL+ALT+t"};
        return std::make_unique<PortalShortcut>(bus, std::move(key), std::move(reports.pressed),
                                                std::move(reports.changed));
    });
}

DesktopHotKeys DesktopHotKeys::on(Desktop desktop, XConnection* connection, SessionBus& bus) {
    if (desktop == Desktop::wayland) return onPortal(bus);
    if (connection != nullptr) return onX(*connection);
    return DesktopHotKeys(nullptr);
}

std::unique_ptr<HotKeyService::Reference> DesktopHotKeys::installHandler(Handler handler) {
    if (!grab_) return nullptr;
    return std::make_unique<Installed>(handlers_.add([handler = std::move(handler)] { handler(); }));
}

std::unique_ptr<HotKeyService::Reference> DesktopHotKeys::registerHotKey(const HotKey& hotKey) {
    constexpr auto modifiers = HotKey::controlKey | HotKey::optionKey;
    if (!grab_ || hotKey.keyCode != HotKey::ansiT || hotKey.modifiers != modifiers) {
        setState({HotKeyState::Holder::nobody, ""});
        return nullptr;
    }
    return grab_(hotKey, {.pressed = [this] { handlers_.call(); },
                          .changed = [this](HotKeyState state) { setState(std::move(state)); },
                          .description = description});
}

void DesktopHotKeys::setState(HotKeyState state) {
    if (state == state_) return;
    state_ = std::move(state);
    if (const auto changed = onStateChange) changed();
}

}  // namespace kovra
