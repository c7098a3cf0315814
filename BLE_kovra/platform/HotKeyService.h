#pragma once

#include <cstdint>
#include <functional>
#include <memory>

namespace kovra {

// A key, known by its place on the keyboard and not by the letter that a layout puts there, with exactly these
// modifiers: neither fewer nor more. Lock keys do not count.
struct HotKey {
    static constexpr std::uint32_t ansiT = 0x11;  // virtual key codes are those of an ANSI keyboard on macOS
    static constexpr std::uint32_t controlKey = 0x1000;
    static constexpr std::uint32_t optionKey = 0x0800;  // Alt, where there is no Option

    std::uint32_t keyCode = 0;
    std::uint32_t modifiers = 0;
    // Tells this program's hot keys apart from others': four characters, big-endian, and a number.
    std::uint32_t signature = 0;
    std::uint32_t number = 0;

    bool operator==(const HotKey&) const = default;
};

// The desktop's service of hot keys that work whichever window has the keyboard.
class HotKeyService {
  public:
    // Returns 0 for a press that is dealt with: it travels no further.
    using Handler = std::function<int()>;

    // What the service gives for a request; letting go of it takes the request back.
    class Reference {
      public:
        virtual ~Reference() = default;
    };

    virtual ~HotKeyService() = default;

    // Called on the main thread, once for each press of a registered hot key however long it is held. Null on failure.
    virtual std::unique_ptr<Reference> installHandler(Handler handler) = 0;
    // From now on presses reach the handlers and nobody else. Null on failure; where the desktop answers late, a
    // refusal may also stay unnoticed.
    virtual std::unique_ptr<Reference> registerHotKey(const HotKey& hotKey) = 0;
};

}  // namespace kovra
