#include "BLE_kovra/platform/linux/tray/IconPixmap.h"

#include <algorithm>
#include <cmath>

#include "BLE_kovra/platform/linux/tray/IconColor.h"

namespace kovra {

namespace {

// Lengths are compared by their squares, since hypot() alone would make the program load the mathematical library.
double square(double value) { return value * value; }

// Returns whether the rectangle covers the point after each side was moved outwards by `growth`. The radii of the
// corners grow by the same length.
bool covers(const RoundedRectangle& rectangle, double growth, Point point) {
    const double halfWidth = rectangle.size.width / 2 + growth;
    const double halfHeight = rectangle.size.height / 2 + growth;
    const double x = std::abs(point.x - (rectangle.origin.x + rectangle.size.width / 2));
    const double y = std::abs(point.y - (rectangle.origin.y + rectangle.size.height / 2));
    if (x > halfWidth || y > halfHeight) return false;
    const double radiusX = std::max(rectangle.cornerRadii.width + growth, 0.0);
    const double radiusY = std::max(rectangle.cornerRadii.height + growth, 0.0);
    const double cornerX = x - (halfWidth - radiusX);
    const double cornerY = y - (halfHeight - radiusY);
    if (cornerX <= 0 || cornerY <= 0) return true;
    return square(cornerX / radiusX) + square(cornerY / radiusY) <= 1;
}

struct StrokeCovers {
    double lineWidth = 0;
    Point point;

    bool operator()(const RoundedRectangle& rectangle) const {
        return covers(rectangle, lineWidth / 2, point) && !covers(rectangle, -lineWidth / 2, point);
    }
    bool operator()(const Segment& segment) const {
        const double dx = segment.to.x - segment.from.x;
        const double dy = segment.to.y - segment.from.y;
        const double lengthSquared = square(dx) + square(dy);
        if (lengthSquared == 0) return false;
        const double x = point.x - segment.from.x;
        const double y = point.y - segment.from.y;
        const double along = x * dx + y * dy;
        const double across = x * dy - y * dx;
        return along >= 0 && along <= lengthSquared && square(across) <= square(lineWidth / 2) * lengthSquared;
    }
};

bool isInked(const Drawing& drawing, Point point) {
    return std::any_of(drawing.strokes.begin(), drawing.strokes.end(), [point](const Stroke& stroke) {
        return std::visit(StrokeCovers{stroke.lineWidth, point}, stroke.shape);
    });
}

// Returns the part of the pixel that the strokes cover, from 0 to 255, estimated from 4 by 4 samples.
std::uint8_t coverage(const Drawing& drawing, int pixels, int column, int row) {
    constexpr int samples = 4;
    int inked = 0;
    for (int down = 0; down < samples; ++down) {
        for (int along = 0; along < samples; ++along) {
            const double x = (column + (along + 0.5) / samples) / pixels;
            const double y = 1 - (row + (down + 0.5) / samples) / pixels;
            if (isInked(drawing, {x * drawing.size.width, y * drawing.size.height})) ++inked;
        }
    }
    return static_cast<std::uint8_t>(inked * 255 / (samples * samples));
}

}  // namespace

std::vector<std::uint8_t> argbPixmap(const Drawing& drawing, int pixels) {
    std::vector<std::uint8_t> bytes;
    bytes.reserve(static_cast<std::size_t>(pixels) * static_cast<std::size_t>(pixels) * 4);
    for (int row = 0; row < pixels; ++row) {
        for (int column = 0; column < pixels; ++column) {
            bytes.push_back(coverage(drawing, pixels, column, row));
            for (const int shift : {16, 8, 0}) bytes.push_back(static_cast<std::uint8_t>(iconGray >> shift));
        }
    }
    return bytes;
}

}  // namespace kovra
