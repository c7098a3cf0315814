#pragma once

#include <string>
#include <variant>
#include <vector>

namespace kovra {

// A position in a drawing. Positions and lengths are in points, the same unit as in a View. The origin is at the bottom
// left, and y grows upwards.
struct Point {
    double x = 0;
    double y = 0;
    bool operator==(const Point&) const = default;
};

struct Size {
    double width = 0;
    double height = 0;
    bool operator==(const Size&) const = default;
};

struct RoundedRectangle {
    Point origin;  // its bottom left corner
    Size size;
    Size cornerRadii;
    bool operator==(const RoundedRectangle&) const = default;
};

struct Segment {
    Point from;
    Point to;
    bool operator==(const Segment&) const = default;
};

// A line of width `lineWidth`, centered on the edge of a rectangle or on a segment. A segment has butt caps.
struct Stroke {
    std::variant<RoundedRectangle, Segment> shape;
    double lineWidth = 1;
    // A gap removes what the strokes before it have drawn, instead of drawing. Only a segment in a glyph can be a gap,
    // and it reaches across the glyph.
    bool isGap = false;
    bool operator==(const Stroke&) const = default;
};

// A version of a picture for few pixels, whose lines lie on whole pixels. It is square: `pixels` by `pixels` points.
struct Glyph {
    int pixels = 0;
    std::vector<Stroke> strokes;
    bool operator==(const Glyph&) const = default;
};

// A picture as a list of black strokes in drawing order, without a background. Nothing is filled. A bar may show a
// glyph in its place.
struct Drawing {
    std::string name;  // the name of the same picture in an icon theme
    Size size;
    std::vector<Stroke> strokes;
    std::vector<Glyph> glyphs = {};  // the smallest first
    bool operator==(const Drawing&) const = default;
};

// Returns what to draw in a square of `pixels` by `pixels`: the smallest glyph that has at least as many pixels,
// otherwise the largest glyph. Returns the drawing if it has no glyphs.
inline Drawing fittedTo(int pixels, const Drawing& drawing) {
    for (const Glyph& glyph : drawing.glyphs) {
        if (glyph.pixels < pixels && &glyph != &drawing.glyphs.back()) continue;
        const auto side = static_cast<double>(glyph.pixels);
        return {.name = drawing.name, .size = {side, side}, .strokes = glyph.strokes};
    }
    return drawing;
}

}  // namespace kovra
