#include "packaging/macos/PaintedPicture.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <variant>

namespace kovra {

namespace {

// Computes the distance of `point` from the edge of a layer, in points. Inside the layer the distance is negative.
struct Distance {
    Point point;
    double lineWidth = 0;

    double operator()(const RoundedRectangle& rectangle) const {
        const double radius = rectangle.cornerRadii.width;
        const double x = std::abs(point.x - rectangle.origin.x - rectangle.size.width / 2);
        const double y = std::abs(point.y - rectangle.origin.y - rectangle.size.height / 2);
        const double beyondX = x - rectangle.size.width / 2 + radius;
        const double beyondY = y - rectangle.size.height / 2 + radius;
        const double outside = std::hypot(std::max(beyondX, 0.0), std::max(beyondY, 0.0));
        return outside + std::min(std::max(beyondX, beyondY), 0.0) - radius;
    }
    double operator()(const Segment& segment) const {
        const double dx = segment.to.x - segment.from.x, dy = segment.to.y - segment.from.y;
        const double x = point.x - segment.from.x, y = point.y - segment.from.y;
        const double along = std::clamp((x * dx + y * dy) / (dx * dx + dy * dy), 0.0, 1.0);
        return std::hypot(x - along * dx, y - along * dy) - lineWidth / 2;
    }
};

struct Paint {
    double red = 0, green = 0, blue = 0, opacity = 0;  // each from 0 to 1; the colors are not premultiplied

    void cover(std::uint32_t color, double share) {
        const double total = share + opacity * (1 - share);
        if (total <= 0) return;
        const auto mix = [&](double part, int shift) {
            const double over = static_cast<double>(color >> shift & 0xFF) / 255;
            return (over * share + part * opacity * (1 - share)) / total;
        };
        red = mix(red, 16);
        green = mix(green, 8);
        blue = mix(blue, 0);
        opacity = total;
    }
};

}  // namespace

PixelSquare paintedPicture(const ColoredPicture& picture, unsigned side, double margin) {
    const double inner = side * (1 - 2 * margin);
    const double pixel = picture.size.width / inner;  // in points
    PixelSquare painted{side, {}};
    painted.bytes.reserve(std::size_t{4} * side * side);
    for (unsigned row = 0; row < side; ++row) {
        for (unsigned column = 0; column < side; ++column) {
            const Point middle{(column + 0.5 - side * margin) * pixel,
                               picture.size.height - (row + 0.5 - side * margin) * pixel};
            Paint paint;
            for (const auto& layer : picture.layers) {
                const double outside = std::visit(Distance{middle, layer.lineWidth}, layer.shape);
                paint.cover(layer.color, std::clamp(0.5 - outside / pixel, 0.0, 1.0));
            }
            for (const double part : {paint.red, paint.green, paint.blue, paint.opacity})
                painted.bytes.push_back(static_cast<std::uint8_t>(std::lround(part * 255)));
        }
    }
    return painted;
}

}  // namespace kovra
