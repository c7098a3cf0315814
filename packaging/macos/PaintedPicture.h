#pragma once

#include "BLE_kovra/platform/ApplicationIcon.h"
#include "packaging/macos/PngImage.h"

namespace kovra {

// The picture as pixels, this many on each side, with smooth edges. It is shrunk to leave an even margin, which is a
// part of the side: icons on macOS do not fill their squares.
PixelSquare paintedPicture(const ColoredPicture& picture, unsigned side, double margin);

}  // namespace kovra
