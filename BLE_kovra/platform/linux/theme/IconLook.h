#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kovra {

// How a template image is painted for a panel. The icon theme has each icon in every look.
//
// `recolored` is for panels that paint symbolic icons in their own color. The next two are for panels that are known to
// be light or dark. Panels may recolor them too. The outlined looks are for panels of which less is known. They are
// legible on any background: the outline is where the ink is not.
enum class IconLook { recolored, onLight, onDark, outlinedDark, outlinedLight };

// Colors are red, green and blue as 0xRRGGBB.
struct IconPaint {
    std::string_view suffix;  // of the icon's name
    std::uint32_t ink = 0;
    std::optional<std::uint32_t> outline = std::nullopt;
};

constexpr std::uint32_t darkInk = 0x20'20'20;
constexpr std::uint32_t lightInk = 0xFF'FF'FF;

// The width of the outline on each side of a line, as a share of the image's width.
constexpr double outlineShare = 0.045;

// The gray of `recolored` shows only if a panel does not recolor the icon after all. On white its contrast is 4.0 to 1,
// on black 5.3 to 1.
constexpr IconPaint paintOf(IconLook look) {
    switch (look) {
        case IconLook::onLight:
            return {"-on-light-symbolic", darkInk};
        case IconLook::onDark:
            return {"-on-dark-symbolic", lightInk};
        case IconLook::outlinedDark:
            return {"-outlined-dark", darkInk, lightInk};
        case IconLook::outlinedLight:
            return {"-outlined-light", lightInk, darkInk};
        case IconLook::recolored:
            break;
    }
    return {"-symbolic", 0x80'80'80};
}

// Returns the name of an icon in this look. `name` is the name of the icon that panels recolor: it ends in -symbolic.
inline std::string iconName(std::string_view name, IconLook look) {
    const std::string_view plain = paintOf(IconLook::recolored).suffix;
    if (!name.ends_with(plain)) return std::string(name);
    return std::string(name.substr(0, name.size() - plain.size())).append(paintOf(look).suffix);
}

constexpr IconLook iconLooks[] = {IconLook::recolored, IconLook::onLight, IconLook::onDark, IconLook::outlinedDark,
                                  IconLook::outlinedLight};

}  // namespace kovra
