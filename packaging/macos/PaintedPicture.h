#pragma once

#include "BLE_kovra/platform/ApplicationIcon.h"
#include "packaging/macos/PngImage.h"

namespace kovra {

// Returns the picture as a square of this many pixels per side, with smooth edges. It is shrunk to leave an even margin
// inside the square, since icons on macOS do not fill their squares.
PixelSquare paintedPicture(const ColoredPicture& picture, unsigned side, double margin);

}  // namespace kovra
