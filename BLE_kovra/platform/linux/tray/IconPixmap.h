#pragma once

#include <cstdint>
#include <vector>

#include "BLE_kovra/platform/Drawing.h"
#include "BLE_kovra/platform/linux/theme/IconLook.h"

namespace kovra {

// Renders the drawing with `pixels` by `pixels` pixels, for panels that cannot load an icon by name. Each pixel has
// four bytes: alpha, red, green and blue, not premultiplied. The first row is the top row.
std::vector<std::uint8_t> argbPixmap(const Drawing& drawing, int pixels, const IconPaint& paint);

}  // namespace kovra
