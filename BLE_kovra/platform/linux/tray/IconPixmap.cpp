#include "BLE_kovra/platform/linux/tray/IconPixmap.h"

#include <algorithm>
#include <cmath>
#include <variant>

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

enum class Sample { empty, outline, ink };

// A picture to sample. `outline` is the width of the outline on each side of a stroke, 0 if there is none.
struct Samples {
    Strokes near;
    double outline;

    Sample at(Point point) const {
        Sample sample = Sample::empty;
        for (const Stroke* stroke : near) {
            if (std::visit(StrokeCovers{stroke->lineWidth, point}, stroke->shape)) {
                if (!stroke->isGap)
                    sample = Sample::ink;
                else if (sample == Sample::ink)
                    sample = outline > 0 ? Sample::outline : Sample::empty;
            } else if (sample == Sample::empty && outline > 0 && !stroke->isGap &&
                       std::visit(StrokeCovers{stroke->lineWidth + 2 * outline, point}, stroke->shape)) {
                sample = Sample::outline;
            }
        }
        return sample;
    }
};

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

constexpr int side = 4;  // samples in a row of a pixel, and rows of samples

struct Coverage {
    int inked = 0;  // number of samples
    int outlined = 0;

    void add(Sample sample, int count) {
        if (sample == Sample::ink) inked += count;
        if (sample == Sample::outline) outlined += count;
    }
};

// Estimates the coverage of a pixel from 4 by 4 samples. If those in the corners are the same, all count as the same:
// no line is thinner than a point, and unless the picture is tiny, no point is smaller than a pixel.
Coverage coverageOf(const Samples& samples, const Grid& grid, int column, int row) {
    Coverage coverage;
    if (samples.near.empty()) return coverage;
    const auto sample = [&](int along, int down) {
        return samples.at(grid.at(column, row, (along + 0.5) / side, (down + 0.5) / side));
    };
    constexpr int last = side - 1;
    const Sample corner = sample(0, 0);
    if (grid.pixels >= grid.size.width && corner == sample(last, last) && corner == sample(last, 0) &&
        corner == sample(0, last)) {
        coverage.add(corner, side * side);
        return coverage;
    }
    for (int down = 0; down < side; ++down) {
        for (int along = 0; along < side; ++along) coverage.add(sample(along, down), 1);
    }
    return coverage;
}

void appendPixel(std::vector<std::uint8_t>& bytes, const Coverage& coverage, const IconPaint& paint) {
    const auto [inked, outlined] = coverage;
    const int covered = inked + outlined;
    bytes.push_back(static_cast<std::uint8_t>(covered * 255 / (side * side)));
    const std::uint32_t outline = paint.outline.value_or(paint.ink);
    for (const int shift : {16, 8, 0}) {
        const int ink = static_cast<std::uint8_t>(paint.ink >> shift);
        const int other = static_cast<std::uint8_t>(outline >> shift);
        bytes.push_back(static_cast<std::uint8_t>(covered == 0 ? ink : (inked * ink + outlined * other) / covered));
    }
}

}  // namespace

std::vector<std::uint8_t> argbPixmap(const Drawing& drawing, int pixels, const IconPaint& paint) {
    std::vector<std::uint8_t> bytes;
    bytes.reserve(static_cast<std::size_t>(pixels) * static_cast<std::size_t>(pixels) * 4);
    const Drawing shown = fittedTo(pixels, drawing);
    const Grid grid{shown.size, pixels};
    Samples samples{{}, paint.outline ? outlineShare * shown.size.width : 0};
    for (int row = 0; row < pixels; ++row) {
        for (int column = 0; column < pixels; ++column) {
            samples.near.clear();
            const Point centre = grid.at(column, row, 0.5, 0.5);
            for (const Stroke& stroke : shown.strokes) {
                const double reach = stroke.lineWidth / 2 + samples.outline + grid.margin();
                if (stroke.isGap && samples.near.empty()) continue;  // there is nothing to remove
                if (std::visit(StrokeMayBeNear{reach, centre}, stroke.shape)) samples.near.push_back(&stroke);
            }
            appendPixel(bytes, coverageOf(samples, grid, column, row), paint);
        }
    }
    return bytes;
}

}  // namespace kovra
