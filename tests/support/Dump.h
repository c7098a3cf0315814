#pragma once

#include <locale>
#include <sstream>
#include <string>

#include "BLE_kovra/platform/Drawing.h"
#include "BLE_kovra/platform/Menu.h"

namespace kovra {

// Functions that return values as text, which a test can compare as a whole.

inline std::string dump(const MenuItem& item) {
    if (item.isSeparator) return "---";
    std::ostringstream text;
    if (item.state) text << (*item.state == MenuItemState::on ? "[x] " : "[ ] ");
    text << item.title;
    if (!item.keyEquivalent.empty()) text << " (" << item.keyEquivalent << ')';
    if (!item.isEnabled) text << " disabled";
    if (item.tag != 0) text << " tag " << item.tag;
    if (item.action) text << " -> " << item.action->name;
    return text.str();
}

inline std::string dump(const Menu& menu) {
    std::string text;
    for (const MenuItem& item : menu.items) text += dump(item) + '\n';
    return text;
}

inline std::string dump(const Stroke& stroke) {
    struct Shape {
        std::ostringstream& text;
        void operator()(const RoundedRectangle& rectangle) const {
            text << "rounded rectangle at " << rectangle.origin.x << ',' << rectangle.origin.y << " of "
                 << rectangle.size.width << 'x' << rectangle.size.height << " radii " << rectangle.cornerRadii.width
                 << ',' << rectangle.cornerRadii.height;
        }
        void operator()(const Segment& segment) const {
            text << "segment " << segment.from.x << ',' << segment.from.y << " to " << segment.to.x << ','
                 << segment.to.y;
        }
    };
    std::ostringstream text;
    text.imbue(std::locale::classic());
    std::visit(Shape{text}, stroke.shape);
    text << " width " << stroke.lineWidth;
    return text.str();
}

inline std::string dump(const Drawing& drawing) {
    std::ostringstream text;
    text << drawing.name << ' ' << drawing.size.width << 'x' << drawing.size.height << '\n';
    for (const Stroke& stroke : drawing.strokes) text << dump(stroke) << '\n';
    return text.str();
}

}  // namespace kovra
