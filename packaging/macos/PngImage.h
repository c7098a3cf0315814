#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kovra {

// A square picture with four bytes per pixel: red, green, blue and opacity. The first row is the top row.
struct PixelSquare {
    unsigned side = 0;
    std::vector<std::uint8_t> bytes;
};

// Returns the picture as a PNG file. Only areas of one color are compressed.
std::string pngImage(const PixelSquare& picture);

}  // namespace kovra
