#pragma once

#include <string>

#include "BLE_kovra/platform/ApplicationIcon.h"
#include "BLE_kovra/platform/Drawing.h"
#include "BLE_kovra/platform/linux/theme/IconLook.h"

namespace kovra {

// Returns the drawing as an icon for icon themes, without its glyphs. Panels paint symbolic icons in their own color:
// some replace every fill, some use the class ColorScheme-Text. Each stroke is therefore written as a filled outline,
// and a gap as what it leaves of the outlines: not every panel supports masks. There may be one gap; it must reach
// across the drawing.
std::string iconSvg(const Drawing& drawing, IconLook look);

// Returns the picture as an icon with its own colors.
std::string iconSvg(const ColoredPicture& picture);

}  // namespace kovra
