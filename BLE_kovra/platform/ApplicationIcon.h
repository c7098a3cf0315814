#pragma once

#include <cstdint>
#include <variant>
#include <vector>

#include "BLE_kovra/platform/Drawing.h"

namespace kovra {

// A picture as a list of shapes in drawing order. Lengths are in points, as in a Drawing.
struct ColoredPicture {
    struct Layer {
        std::uint32_t color = 0;                        // 0xRRGGBB
        std::variant<RoundedRectangle, Segment> shape;  // a rectangle is filled
        double lineWidth = 0;                           // the width of a segment, whose ends are round
        bool operator==(const Layer&) const = default;
    };
    Size size;
    std::vector<Layer> layers;
    bool operator==(const ColoredPicture&) const = default;
};

// The application's icon: the muted trackpad of the status item, in color on a blue tile. The slash shows the purpose
// of the application, not its state.
inline ColoredPicture applicationIcon() {
    constexpr std::uint32_t blue = 0x3A7BE0;
    constexpr std::uint32_t white = 0xFFFFFF;
    constexpr std::uint32_t amber = 0xFFB300;
    const Segment slash{.from = {3, 3}, .to = {15, 15}};
    return {.size = {18, 18},
            .layers = {{blue, RoundedRectangle{.origin = {0, 0}, .size = {18, 18}, .cornerRadii = {4, 4}}},
                       {white, RoundedRectangle{.origin = {2.5, 4}, .size = {13, 10}, .cornerRadii = {2, 2}}},
                       {blue, Segment{.from = {9, 4}, .to = {9, 9}}, 1},
                       {blue, slash, 3.4},  // a blue edge between the slash and the white
                       {amber, slash, 1.6}}};
}

}  // namespace kovra
