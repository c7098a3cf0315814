#pragma once

#include "BLE_kovra/platform/ApplicationIcon.h"
#include "packaging/macos/PngImage.h"

namespace kovra {

// Returns the picture as a square of `side` by `side` pixels, with smooth edges. The picture is shrunk to leave a
// margin at each edge of the square, since icons on macOS do not fill their squares. `margin` is a fraction of the
// side.
PixelSquare paintedPicture(const ColoredPicture& picture, unsigned side, double margin);

}  // namespace kovra
