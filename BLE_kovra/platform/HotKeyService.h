#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace kovra {

// A key, identified by its position on the keyboard rather than by its letter, with exactly the given modifiers. The
// state of the lock keys, such as Caps Lock, does not matter.
struct HotKey {
    static constexpr std::uint32_t ansiT = 0x11;  // a macOS virtual key code, for an ANSI keyboard
    static constexpr std::uint32_t controlKey = 0x1000;
    static constexpr std::uint32_t optionKey = 0x0800;  // Alt, where there is no Option

    std::uint32_t keyCode = 0;
    std::uint32_t modifiers = 0;
    // `signature` and `number` together identify the hot key. `signature` consists of four characters, big-endian.
    std::uint32_t signature = 0;
    std::uint32_t number = 0;

    bool operator==(const HotKey&) const = default;
};

// Whether presses of the registered hot key arrive.
struct HotKeyState {
    enum class Holder {
        us,
        another,      // another program has the key
        unrequested,  // nobody yet: the desktop does not know the hot key, and assigns a key on request
        refused,      // nobody: the user has assigned no key, or has taken it away; it can be requested again
        nobody,       // this desktop assigns no key to this program
    };

    Holder holder = Holder::us;
    // The name of the combination that the desktop has assigned, in the desktop's own words. Empty if the desktop does
    // not tell; it is the registered combination then.
    std::string combination;

    // Returns whether Reference::request() asks the user for the key.
    bool mayBeRequested() const { return holder == Holder::unrequested || holder == Holder::refused; }

    bool operator==(const HotKeyState&) const = default;
};

// The registration of hot keys that work whichever window has the keyboard focus.
class HotKeyService {
  public:
    // A handler returns 0 if it has handled the press. The press is then not passed on to other programs.
    using Handler = std::function<int()>;

    // An installed handler or a registered hot key. Its destructor removes the handler or unregisters the hot key.
    class Reference {
      public:
        virtual ~Reference() = default;
        // Has the desktop ask the user for the registered hot key, if state() says that it may be requested. Does
        // nothing while the user is being asked. The answer changes state().
        virtual void request() {}
    };

    virtual ~HotKeyService() = default;

    // Installs a handler. It runs on the main thread, once per press of a registered hot key, however long the key is
    // held. Returns null on failure.
    virtual std::unique_ptr<Reference> installHandler(Handler handler) = 0;
    // Registers the hot key. From then on its presses reach only the handlers. Returns null on failure. The desktop may
    // also refuse the hot key after this function has returned. The hot key then does not work.
    virtual std::unique_ptr<Reference> registerHotKey(const HotKey& hotKey) = 0;

    // The state of the hot key that was registered last. Until the desktop has answered, it is assumed to be ours. A
    // service that cannot tell always answers so.
    virtual HotKeyState state() const { return {}; }
    // Called on the main thread after state() has changed.
    std::function<void()> onStateChange;
    // What a press does, in the user's language, for desktops that show this to the user. Set it before
    // registerHotKey().
    std::string description;
};

}  // namespace kovra
