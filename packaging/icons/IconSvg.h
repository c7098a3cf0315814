#pragma once

#include <string>

#include "BLE_kovra/platform/ApplicationIcon.h"
#include "BLE_kovra/platform/Drawing.h"

namespace kovra {

// Returns the drawing as a symbolic icon for icon themes. Panels paint such icons in their own color: some replace
// every fill, some use the class ColorScheme-Text. Each stroke is therefore written as a filled outline.
std::string iconSvg(const Drawing& drawing);

// Returns the picture as an icon with its own colors.
std::string iconSvg(const ColoredPicture& picture);

}  // namespace kovra
