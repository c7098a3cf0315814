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
    bool operator==(const Stroke&) const = default;
};

// A picture as a list of black strokes in drawing order, without a background. Nothing is filled.
struct Drawing {
    std::string name;  // the name of the same picture in an icon theme
    Size size;
    std::vector<Stroke> strokes;
    bool operator==(const Drawing&) const = default;
};

}  // namespace kovra
