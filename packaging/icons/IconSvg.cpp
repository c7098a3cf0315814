#include "packaging/icons/IconSvg.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iomanip>
#include <ios>
#include <locale>
#include <sstream>

#include "BLE_kovra/platform/linux/tray/IconColor.h"

namespace kovra {

namespace {

// A writer of strokes as filled SVG outlines. In SVG, y grows downwards from the top.
class Outlines {
  public:
    explicit Outlines(double height) : height_(height) {
        text_.imbue(std::locale::classic());
        text_ << std::setprecision(4);
    }

    void operator()(const RoundedRectangle& rectangle, double lineWidth) {
        open();
        contour(rectangle, lineWidth / 2);
        contour(rectangle, -lineWidth / 2);  // the even-odd rule leaves the inside empty
        close();
    }
    void operator()(const Segment& segment, double lineWidth) {
        const double dx = segment.to.x - segment.from.x;
        const double dy = segment.to.y - segment.from.y;
        const double length = std::hypot(dx, dy);
        if (length == 0) return;
        const double sideX = -dy / length * lineWidth / 2;
        const double sideY = dx / length * lineWidth / 2;
        open();
        corner('M', segment.from.x + sideX, segment.from.y + sideY);
        corner('L', segment.to.x + sideX, segment.to.y + sideY);
        corner('L', segment.to.x - sideX, segment.to.y - sideY);
        corner('L', segment.from.x - sideX, segment.from.y - sideY);
        text_ << 'Z';
        close();
    }

    std::string text() const { return text_.str(); }

  private:
    void open() { text_ << R"(  <path class="ColorScheme-Text" fill="currentColor" fill-rule="evenodd" d=")"; }
    void close() { text_ << "\"/>\n"; }
    void corner(char command, double x, double y) { text_ << command << x << ' ' << height_ - y; }

    // Writes the rectangle's outline, offset outwards by `growth`. The outline runs clockwise from the right end of the
    // top left corner.
    void contour(const RoundedRectangle& rectangle, double growth) {
        const double left = rectangle.origin.x - growth;
        const double right = rectangle.origin.x + rectangle.size.width + growth;
        const double bottom = rectangle.origin.y - growth;
        const double top = rectangle.origin.y + rectangle.size.height + growth;
        const double radiusX = std::max(rectangle.cornerRadii.width + growth, 0.0);
        const double radiusY = std::max(rectangle.cornerRadii.height + growth, 0.0);
        const auto arcTo = [&](double x, double y) {
            text_ << 'A' << radiusX << ' ' << radiusY << " 0 0 1 " << x << ' ' << height_ - y;
        };
        corner('M', left + radiusX, top);
        corner('L', right - radiusX, top);
        arcTo(right, top - radiusY);
        corner('L', right, bottom + radiusY);
        arcTo(right - radiusX, bottom);
        corner('L', left + radiusX, bottom);
        arcTo(left, bottom + radiusY);
        corner('L', left, top - radiusY);
        arcTo(left + radiusX, top);
        text_ << 'Z';
    }

    double height_;
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

}  // namespace

std::string iconSvg(const Drawing& drawing) {
    std::ostringstream svg = opened(drawing.size);
    svg << R"(  <style id="current-color-scheme" type="text/css">.ColorScheme-Text { color: )" << hexadecimal(iconGray)
        << "; }</style>\n";
    Outlines outlines(drawing.size.height);
    for (const Stroke& stroke : drawing.strokes) {
        std::visit([&](const auto& shape) { outlines(shape, stroke.lineWidth); }, stroke.shape);
    }
    svg << outlines.text() << "</svg>\n";
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
