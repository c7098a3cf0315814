#include "BLE_kovra/platform/linux/bus/SessionBus.h"

#include <cstdlib>
#include <string>
#include <string_view>

namespace kovra {

namespace {

// Escapes a value in a bus address. Letters, digits and -_/.\* are unchanged; any other byte becomes % and two
// hexadecimal digits.
std::string escaped(std::string_view path) {
    constexpr std::string_view digits = "0123456789abcdef";
    constexpr std::string_view plain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_/.\\*";
    std::string text;
    for (const char c : path) {
        if (plain.find(c) != std::string_view::npos) {
            text += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            text += {'%', digits[byte >> 4U], digits[byte & 0xFU]};
        }
    }
    return text;
}

// Returns an empty text if neither variable is set.
std::string standardAddress() {
    const char* named = std::getenv("DBUS_SESSION_BUS_ADDRESS");
    if (named != nullptr) return named;
    const char* folder = std::getenv("XDG_RUNTIME_DIR");
    return folder == nullptr ? "" : "unix:path=" + escaped(folder) + "/bus";
}

}  // namespace

SessionBus::SessionBus(SdEventLoop& loop)
    : MessageBus(loop, {.name = "session bus", .address = standardAddress(), .isTrusted = true, .mayComeLater = true}) {
}

}  // namespace kovra
