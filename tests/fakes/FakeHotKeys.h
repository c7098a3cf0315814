#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "BLE_kovra/platform/HotKeyService.h"

namespace kovra {

// A keyboard on which a test can press Control, Option and T. `calls` records what is asked of the desktop.
class FakeHotKeys : public HotKeyService {
  public:
    std::unique_ptr<Reference> installHandler(Handler handler) override {
        calls.emplace_back("install");
        if (refuses) return nullptr;
        handlers.push_back(std::move(handler));
        return std::make_unique<Held>([this] {
            calls.emplace_back("remove");
            handlers.pop_back();
        });
    }
    std::unique_ptr<Reference> registerHotKey(const HotKey& hotKey) override {
        calls.emplace_back("register");
        if (stateWhenRegistered) change(*stateWhenRegistered);
        if (refuses || takenByAnother) return nullptr;
        registered.push_back(hotKey);
        return std::make_unique<Registered>(*this);
    }

    HotKeyState state() const override { return state_; }

    // The desktop reports another state.
    void change(const HotKeyState& state) {
        state_ = state;
        if (onStateChange) onStateChange();
    }

    // Presses Control, Option and T. Returns the answer of the last handler; nothing if there is no handler. It also
    // returns nothing if no hot key is registered, since the press then goes to the focused window.
    std::optional<int> press() {
        if (registered.empty()) return std::nullopt;
        std::optional<int> status;
        for (const Handler& handler : std::vector(handlers)) status = handler();
        return status;
    }

    bool refuses = false;
    bool takenByAnother = false;
    std::optional<HotKeyState> stateWhenRegistered;
    std::vector<Handler> handlers;
    std::vector<HotKey> registered;
    std::vector<std::string> calls;
    std::function<void()> onRequest;  // the desktop asks the user

  private:
    HotKeyState state_;

    class Held : public Reference {
      public:
        explicit Held(std::function<void()> release) : release_(std::move(release)) {}
        Held(const Held&) = delete;
        Held& operator=(const Held&) = delete;
        ~Held() override { release_(); }

      private:
        std::function<void()> release_;
    };

    class Registered : public Held {
      public:
        explicit Registered(FakeHotKeys& owner)
            : Held([&owner] {
                  owner.calls.emplace_back("unregister");
                  owner.registered.pop_back();
              }),
              owner_(owner) {}
        void request() override {
            owner_.calls.emplace_back("request");
            if (owner_.onRequest) owner_.onRequest();
        }

      private:
        FakeHotKeys& owner_;
    };
};

}  // namespace kovra
