#include "BLE_kovra/control/Printable.h"

#include <cstddef>

namespace kovra::control {

std::string printable(std::string_view text) {
    std::string shown;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        // U+0080 to U+009F are control characters, too. In UTF-8 they begin with 0xC2.
        const auto next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : '\0');
        const bool isHighControl = byte == 0xC2 && next >= 0x80 && next < 0xA0;
        if (isHighControl) ++i;
        shown += byte < ' ' || byte == 0x7F || isHighControl ? '?' : text[i];
    }
    return shown;
}

}  // namespace kovra::control
