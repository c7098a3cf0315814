#pragma once

#include <cstdint>

namespace kovra {

// What a template image is painted in where the panel does not paint it in its own colour: a grey that stands out from
// a white panel (contrast 3.9 to 1) and from a dark one (5.3 to 1 on black, 3.5 to 1 on #2d2d2d) alike.
constexpr std::uint32_t iconGrey = 0x80'80'80;

}  // namespace kovra
