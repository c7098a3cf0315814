#pragma once

#include <cstdint>
#include <vector>

#include "BLE_kovra/platform/Drawing.h"

namespace kovra {

// The drawing as `pixels` by `pixels` points of colour, for panels that take no icon by its name: four bytes each,
// alpha, red, green, blue, the colours not multiplied by alpha; rows from the top.
std::vector<std::uint8_t> argbPixmap(const Drawing& drawing, int pixels);

}  // namespace kovra
