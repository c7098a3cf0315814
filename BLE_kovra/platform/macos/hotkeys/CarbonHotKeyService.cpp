#include "BLE_kovra/platform/macos/hotkeys/CarbonHotKeyService.h"

#include <Carbon/Carbon.h>

#include <utility>

namespace kovra {

namespace {

class Installed : public HotKeyService::Reference {
  public:
    explicit Installed(HotKeyService::Handler handler) : handler_(std::move(handler)) {
        const EventTypeSpec pressed{kEventClassKeyboard, kEventHotKeyPressed};
        if (InstallEventHandler(GetApplicationEventTarget(), press, 1, &pressed, nullptr, &installed_) != noErr) return;
        earlier_ = std::exchange(last, this);
    }
    ~Installed() override {
        Installed** place = &last;
        while (*place != nullptr && *place != this) place = &(*place)->earlier_;
        if (*place == this) *place = earlier_;
        if (installed_ != nullptr) RemoveEventHandler(installed_);
    }
    bool isInstalled() const { return installed_ != nullptr; }

  private:
    static OSStatus press(EventHandlerCallRef, EventRef, void*) noexcept {
        if (last == nullptr) return noErr;
        const auto handler = last->handler_;  // a copy: the handler may destroy this object
        return handler();
    }

    // A chain instead of a container: exit() destroys a container before a handler that exists until then.
    static inline Installed* last = nullptr;

    HotKeyService::Handler handler_;
    EventHandlerRef installed_ = nullptr;
    Installed* earlier_ = nullptr;
};

class Registered : public HotKeyService::Reference {
  public:
    explicit Registered(EventHotKeyRef hotKey) : hotKey_(hotKey) {}
    ~Registered() override { UnregisterEventHotKey(hotKey_); }

  private:
    EventHotKeyRef hotKey_;
};

}  // namespace

std::unique_ptr<HotKeyService::Reference> CarbonHotKeyService::installHandler(Handler handler) {
    auto installed = std::make_unique<Installed>(std::move(handler));
    if (!installed->isInstalled()) return nullptr;
    return installed;
}

std::unique_ptr<HotKeyService::Reference> CarbonHotKeyService::registerHotKey(const HotKey& hotKey) {
    const EventHotKeyID id{hotKey.signature, hotKey.number};
    EventHotKeyRef registered = nullptr;
    if (RegisterEventHotKey(hotKey.keyCode, hotKey.modifiers, id, GetApplicationEventTarget(), 0, &registered) !=
        noErr) {
        return nullptr;
    }
    return std::make_unique<Registered>(registered);
}

}  // namespace kovra
