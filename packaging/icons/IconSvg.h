#pragma once

#include <string>

#include "BLE_kovra/platform/ApplicationIcon.h"
#include "BLE_kovra/platform/Drawing.h"

namespace kovra {

// The drawing as a symbolic icon for icon themes. Panels paint such icons in their own colour, some by replacing every
// fill, some by the class ColorScheme-Text; so each stroke is written as the filled outline of its ink.
std::string iconSvg(const Drawing& drawing);

// The picture as an icon with colours of its own.
std::string iconSvg(const ColoredPicture& picture);

}  // namespace kovra
