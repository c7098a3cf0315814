#include "packaging/icons/IconSvg.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iomanip>
#include <ios>
#include <locale>
#include <numbers>
#include <sstream>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace kovra {

namespace {

using Contour = std::vector<Point>;  // a closed polygon
using Contours = std::vector<Contour>;

// The four corners of a segment's stroke, counterclockwise. Empty for a segment without a length.
Contour cornersOf(const Segment& segment, double lineWidth) {
    const double dx = segment.to.x - segment.from.x;
    const double dy = segment.to.y - segment.from.y;
    const double length = std::hypot(dx, dy);
    if (length == 0) return {};
    const double sideX = -dy / length * lineWidth / 2;
    const double sideY = dx / length * lineWidth / 2;
    return {{segment.from.x - sideX, segment.from.y - sideY},
            {segment.to.x - sideX, segment.to.y - sideY},
            {segment.to.x + sideX, segment.to.y + sideY},
            {segment.from.x + sideX, segment.from.y + sideY}};
}

// The rectangle's outline, offset outwards by `growth`, counterclockwise. Each corner consists of short lines, since
// true arcs would be hard to cut. Panels render a corner the same whether another part of the icon is cut or not.
Contour contourOf(const RoundedRectangle& rectangle, double growth) {
    constexpr int linesOfACorner = 16;  // so many that no pixel differs visibly from a true corner
    const double radiusX = std::max(rectangle.cornerRadii.width + growth, 0.0);
    const double radiusY = std::max(rectangle.cornerRadii.height + growth, 0.0);
    const double left = rectangle.origin.x - growth + radiusX;
    const double right = rectangle.origin.x + rectangle.size.width + growth - radiusX;
    const double bottom = rectangle.origin.y - growth + radiusY;
    const double top = rectangle.origin.y + rectangle.size.height + growth - radiusY;
    const Point centres[] = {{right, top}, {left, top}, {left, bottom}, {right, bottom}};
    Contour contour;
    for (int corner = 0; corner < 4; ++corner) {
        for (int line = 0; line <= linesOfACorner; ++line) {
            const double angle = (corner + static_cast<double>(line) / linesOfACorner) * std::numbers::pi / 2;
            contour.push_back(
                {centres[corner].x + radiusX * std::cos(angle), centres[corner].y + radiusY * std::sin(angle)});
            if (radiusX == 0 && radiusY == 0) break;
        }
    }
    return contour;
}

struct ContoursOf {
    Contours operator()(const RoundedRectangle& rectangle) const {
        return {contourOf(rectangle, lineWidth / 2), contourOf(rectangle, -lineWidth / 2)};
    }
    Contours operator()(const Segment& segment) const { return {cornersOf(segment, lineWidth)}; }

    double lineWidth;
};

// A line with a direction.
struct Line {
    Point from;
    Point to;
    // Positive on the left of the line, zero on it.
    double side(Point point) const {
        return (to.x - from.x) * (point.y - from.y) - (to.y - from.y) * (point.x - from.x);
    }
};

struct Part {
    Contour contour;
    bool isCut = false;  // if so, the edge from the last point to the first one lies on the line
};

// Returns the part of a convex polygon that is on the left of the line.
Part leftOf(const Line& line, const Contour& contour) {
    Part part;
    std::size_t first = 0;  // the point where the polygon comes to the left of the line
    for (std::size_t i = 0; i < contour.size(); ++i) {
        const Point one = contour[i];
        const Point next = contour[(i + 1) % contour.size()];
        const double here = line.side(one);
        const double there = line.side(next);
        if (here >= 0) part.contour.push_back(one);
        if ((here >= 0) == (there >= 0)) continue;
        const double share = here / (here - there);
        part.isCut = true;
        if (there >= 0) first = part.contour.size();
        part.contour.push_back({one.x + share * (next.x - one.x), one.y + share * (next.y - one.y)});
    }
    std::rotate(part.contour.begin(), part.contour.begin() + static_cast<std::ptrdiff_t>(first), part.contour.end());
    return part;
}

// Returns the part of an area that is on the left of the line. The second contour of the area, if there is one, is a
// hole in the first. If the line cuts both, one contour leads around the rest of the hole: edges that lie on each other
// would be visible.
Contours leftOf(const Line& line, const Contours& area) {
    Contours parts;
    bool areCut = true;
    for (const Contour& contour : area) {
        Part part = leftOf(line, contour);
        if (part.contour.empty()) continue;
        areCut = areCut && part.isCut;
        parts.push_back(std::move(part.contour));
    }
    if (parts.size() < 2 || !areCut) return parts;
    parts[0].insert(parts[0].end(), parts[1].rbegin(), parts[1].rend());
    parts.pop_back();
    return parts;
}

// A writer of strokes as filled SVG outlines. In SVG, y grows downwards from the top.
class Outlines {
  public:
    // Each outline is an element `path` with these attributes.
    Outlines(double height, std::string attributes) : height_(height), attributes_(std::move(attributes)) {
        text_.imbue(std::locale::classic());
        text_ << std::setprecision(4);
    }

    void operator()(const Contours& area) {
        if (area.empty() || area.front().empty()) return;
        open();
        for (const Contour& each : area) {
            char command = 'M';
            for (const Point& point : each) corner(std::exchange(command, 'L'), point.x, point.y);
            text_ << 'Z';
        }
        close();
    }
    std::string text() const { return text_.str(); }

  private:
    void open() { text_ << "  <path " << attributes_ << R"( fill-rule="evenodd" d=")"; }
    void close() { text_ << "\"/>\n"; }
    void corner(char command, double x, double y) {
        const auto rounded = [](double value) { return std::round(value * 1000) / 1000 + 0.0; };  // no -0
        text_ << command << rounded(x) << ' ' << rounded(height_ - y);
    }

    double height_;
    std::string attributes_;
    std::ostringstream text_;
};

// A writer of one layer of a picture. `height` is the height of the picture.
struct ColoredShape {
    void operator()(const RoundedRectangle& rectangle) const {
        svg << "  <rect fill=\"" << color << "\" x=\"" << rectangle.origin.x << "\" y=\""
            << height - rectangle.origin.y - rectangle.size.height << "\" width=\"" << rectangle.size.width
            << "\" height=\"" << rectangle.size.height << "\" rx=\"" << rectangle.cornerRadii.width << "\" ry=\""
            << rectangle.cornerRadii.height << "\"/>\n";
    }
    void operator()(const Segment& segment) const {
        svg << "  <path stroke=\"" << color << "\" stroke-width=\"" << lineWidth << "\" stroke-linecap=\"round\" d=\"M"
            << segment.from.x << ' ' << height - segment.from.y << 'L' << segment.to.x << ' ' << height - segment.to.y
            << "\"/>\n";
    }

    std::ostringstream& svg;
    double height;
    std::string color;
    double lineWidth;
};

std::string hexadecimal(std::uint32_t color) {
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << '#' << std::hex << std::setw(6) << std::setfill('0') << color;
    return text.str();
}

std::ostringstream opened(Size size) {
    std::ostringstream svg;
    svg.imbue(std::locale::classic());
    svg << R"(<svg xmlns="http://www.w3.org/2000/svg" width=")" << size.width << R"(" height=")" << size.height
        << R"(" viewBox="0 0 )" << size.width << ' ' << size.height << "\">\n";
    return svg;
}

// Returns the line around the strokes. It also fills the gaps in them.
std::string outline(const Drawing& drawing, std::uint32_t color) {
    std::ostringstream attributes;
    attributes.imbue(std::locale::classic());
    attributes << "fill=\"" << hexadecimal(color) << "\" stroke=\"" << hexadecimal(color) << "\" stroke-width=\""
               << 2 * outlineShare * drawing.size.width << "\" stroke-linejoin=\"round\"";
    Outlines outlines(drawing.size.height, attributes.str());
    for (const Stroke& stroke : drawing.strokes) {
        if (!stroke.isGap) outlines(std::visit(ContoursOf{stroke.lineWidth}, stroke.shape));
    }
    return outlines.text();
}

// Returns the areas that the strokes cover, without the gap.
std::string ink(const Drawing& drawing, const std::string& attributes) {
    Outlines outlines(drawing.size.height, attributes);
    const auto gap =
        std::find_if(drawing.strokes.begin(), drawing.strokes.end(), [](const Stroke& stroke) { return stroke.isGap; });
    for (auto stroke = drawing.strokes.begin(); stroke != drawing.strokes.end(); ++stroke) {
        if (stroke->isGap) continue;
        const Contours area = std::visit(ContoursOf{stroke->lineWidth}, stroke->shape);
        if (gap == drawing.strokes.end() || gap < stroke) {
            outlines(area);
            continue;
        }
        const Contour band = cornersOf(std::get<Segment>(gap->shape), gap->lineWidth);
        outlines(leftOf(Line{band[3], band[2]}, area));
        outlines(leftOf(Line{band[1], band[0]}, area));
    }
    return outlines.text();
}

}  // namespace

std::string iconSvg(const Drawing& drawing, IconLook look) {
    const IconPaint paint = paintOf(look);
    const bool isSymbolic = paint.suffix.ends_with("-symbolic");
    std::ostringstream svg = opened(drawing.size);
    if (isSymbolic) {
        svg << R"(  <style id="current-color-scheme" type="text/css">.ColorScheme-Text { color: )"
            << hexadecimal(paint.ink) << "; }</style>\n";
    }
    if (paint.outline) svg << outline(drawing, *paint.outline);
    svg << ink(drawing, isSymbolic ? R"(class="ColorScheme-Text" fill="currentColor")"
                                   : "fill=\"" + hexadecimal(paint.ink) + '"');
    svg << "</svg>\n";
    return svg.str();
}

std::string iconSvg(const ColoredPicture& picture) {
    std::ostringstream svg = opened(picture.size);
    for (const auto& layer : picture.layers) {
        std::visit(ColoredShape{svg, picture.size.height, hexadecimal(layer.color), layer.lineWidth}, layer.shape);
    }
    svg << "</svg>\n";
    return svg.str();
}

}  // namespace kovra
