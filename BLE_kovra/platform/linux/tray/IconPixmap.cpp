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

// Tells whether a point may be nearer to a stroke's ink than `margin`. It may answer yes for a point that is farther
// away, but never no for one that is near. Most pixels of an icon are far from every stroke and need no samples.
struct StrokeMayBeNear {
    double reach = 0;  // half the line's width plus the margin
    Point point;

    bool operator()(const RoundedRectangle& rectangle) const {
        const double x = std::abs(point.x - (rectangle.origin.x + rectangle.size.width / 2));
        const double y = std::abs(point.y - (rectangle.origin.y + rectangle.size.height / 2));
        const double fromSide = rectangle.size.width / 2 - x;  // positive inside the rectangle
        const double fromTop = rectangle.size.height / 2 - y;
        if (fromSide < -reach || fromTop < -reach) return false;
        const bool isInside = (fromSide > reach + rectangle.cornerRadii.width && fromTop > reach) ||
                              (fromSide > reach && fromTop > reach + rectangle.cornerRadii.height);
        return !isInside;
    }
    bool operator()(const Segment& segment) const {
        const double dx = segment.to.x - segment.from.x;
        const double dy = segment.to.y - segment.from.y;
        const double across = (point.x - segment.from.x) * dy - (point.y - segment.from.y) * dx;
        return square(across) <= square(reach) * (square(dx) + square(dy));
    }
};

using Strokes = std::vector<const Stroke*>;

bool areInked(const Strokes& strokes, Point point) {
    return std::any_of(strokes.begin(), strokes.end(), [point](const Stroke* stroke) {
        return std::visit(StrokeCovers{stroke->lineWidth, point}, stroke->shape);
    });
}

// The grid of a drawing's pixels.
struct Grid {
    Size size;
    int pixels;

    // Returns a point of a pixel. `along` and `down` are from 0 to 1, from the pixel's top left corner.
    Point at(int column, int row, double along, double down) const {
        const double x = (column + along) / pixels;
        const double y = 1 - (row + down) / pixels;
        return {x * size.width, y * size.height};
    }
    // The centre of a pixel is nowhere farther than this from the rest of the pixel.
    double margin() const { return (size.width + size.height) / 2 / pixels; }
};

// Returns the part of the pixel that the strokes cover, from 0 to 255, estimated from 4 by 4 samples.
std::uint8_t coverage(const Strokes& strokes, const Grid& grid, int column, int row) {
    constexpr int samples = 4;
    int inked = 0;
    for (int down = 0; down < samples; ++down) {
        for (int along = 0; along < samples; ++along) {
            if (areInked(strokes, grid.at(column, row, (along + 0.5) / samples, (down + 0.5) / samples))) ++inked;
        }
    }
    return static_cast<std::uint8_t>(inked * 255 / (samples * samples));
}

}  // namespace

std::vector<std::uint8_t> argbPixmap(const Drawing& drawing, int pixels) {
    std::vector<std::uint8_t> bytes;
    bytes.reserve(static_cast<std::size_t>(pixels) * static_cast<std::size_t>(pixels) * 4);
    const Grid grid{drawing.size, pixels};
    Strokes near;
    for (int row = 0; row < pixels; ++row) {
        for (int column = 0; column < pixels; ++column) {
            near.clear();
            const Point centre = grid.at(column, row, 0.5, 0.5);
            for (const Stroke& stroke : drawing.strokes) {
                if (std::visit(StrokeMayBeNear{stroke.lineWidth / 2 + grid.margin(), centre}, stroke.shape))
                    near.push_back(&stroke);
            }
            bytes.push_back(near.empty() ? 0 : coverage(near, grid, column, row));
            for (const int shift : {16, 8, 0}) bytes.push_back(static_cast<std::uint8_t>(iconGray >> shift));
        }
    }
    return bytes;
}

}  // namespace kovra
