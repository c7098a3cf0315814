#pragma once

#include <cstdint>

namespace kovra {

// Whether a panel is light or dark.
enum class PanelTone { light, dark };

// Returns the tone of a panel whose text or symbolic icons have this color, as 0xRRGGBB: dark text is on a light panel.
// The weights are those of a color's brightness in sRGB, without its correction for the eye.
constexpr PanelTone toneBehind(std::uint32_t color) {
    const std::uint32_t red = color >> 16U & 0xFFU;
    const std::uint32_t green = color >> 8U & 0xFFU;
    const std::uint32_t blue = color & 0xFFU;
    return 299 * red + 587 * green + 114 * blue < 128 * 1000 ? PanelTone::light : PanelTone::dark;
}

}  // namespace kovra
