#pragma once

#include <cstdint>

namespace kovra {

// The color of a template image in panels that do not recolor it. This gray is visible on a white panel (contrast 3.9
// to 1). It is also visible on dark panels (5.3 to 1 on black, 3.5 to 1 on #2d2d2d).
constexpr std::uint32_t iconGray = 0x80'80'80;

}  // namespace kovra
