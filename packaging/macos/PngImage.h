#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kovra {

// A square picture of four bytes a pixel: red, green, blue, and how opaque it is. From the top, row by row.
struct PixelSquare {
    unsigned side = 0;
    std::vector<std::uint8_t> bytes;
};

// The picture as a PNG file. Even areas are written shortly; otherwise nothing is done to save space.
std::string pngImage(const PixelSquare& picture);

}  // namespace kovra
