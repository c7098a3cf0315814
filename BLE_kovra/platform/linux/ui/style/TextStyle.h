#pragma once

#include <QColor>
#include <QFont>
#include <vector>

#include "BLE_kovra/platform/View.h"

class QPalette;

namespace kovra {

// A text's role as the toolkit draws it.
struct TextStyle : TextRole {
    TextStyle inside(const std::vector<Modifier>& modifiers) const { return {TextRole::inside(modifiers)}; }
    // The desktop's own font in the size of the role.
    QFont qtFont() const;
    bool operator==(const TextStyle&) const = default;
};

// A colour by its role, legible on the palette's window in a dark theme and in a light one: secondary text has a
// contrast of at least 4.5 to 1, where the theme's own text has.
QColor roleColor(Color color, const QPalette& palette);

// What Fusion, the toolkit's own style, has to take for the window's colour so that the outlines of its boxes have a
// contrast of at least 3 to 1. It draws them a little darker than the window, which in a dark window nobody sees.
QColor outlineSource(const QPalette& palette);

// As WCAG 2 defines it: from 1, none, to 21.
double contrast(const QColor& one, const QColor& other);

}  // namespace kovra
