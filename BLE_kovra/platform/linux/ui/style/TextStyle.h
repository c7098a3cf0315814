#pragma once

#include <QColor>
#include <QFont>
#include <vector>

#include "BLE_kovra/platform/View.h"

class QPalette;

namespace kovra {

// The role of a text, in terms of the toolkit.
struct TextStyle : TextRole {
    TextStyle inside(const std::vector<Modifier>& modifiers) const { return {TextRole::inside(modifiers)}; }
    // The desktop's font in the size and weight of the role.
    QFont qtFont() const;
    bool operator==(const TextStyle&) const = default;
};

// Returns the color of a role, legible on the window color in dark and light themes. The contrast of secondary text is
// at least 4.5 to 1 if the theme's own text reaches that.
QColor roleColor(Color color, const QPalette& palette);

// The style Fusion draws outlines of boxes slightly darker than the window, which is invisible in dark themes. Given
// this color instead of the window's, it draws them with a contrast of at least 3 to 1.
QColor outlineBaseColor(const QPalette& palette);

// The contrast ratio as WCAG 2 defines it, from 1 to 21.
double contrast(const QColor& one, const QColor& other);

}  // namespace kovra
