#pragma once

#include <string>
#include <variant>
#include <vector>

namespace kovra {

// Lengths are points, the origin is at the bottom left, y grows upwards.
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

// A line of this width with its middle on the shape; a segment's ends are cut off square, at its end points.
struct Stroke {
    std::variant<RoundedRectangle, Segment> shape;
    double lineWidth = 1;
    bool operator==(const Stroke&) const = default;
};

// A picture as the strokes that make it, black on nothing, in the order in which they are drawn. Nothing is filled.
struct Drawing {
    std::string name;  // under which a desktop's icon theme may hold the same picture
    Size size;
    std::vector<Stroke> strokes;
    bool operator==(const Drawing&) const = default;
};

}  // namespace kovra
