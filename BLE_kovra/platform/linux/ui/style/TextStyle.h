#pragma once

#include <QColor>
#include <QFont>
#include <vector>

#include "BLE_kovra/platform/View.h"

class QPalette;

namespace kovra {

// The style of a text, with the toolkit's font for it.
struct TextStyle : TextRole {
    TextStyle inside(const std::vector<Modifier>& modifiers) const { return {TextRole::inside(modifiers)}; }
    // Returns the desktop's font in the size and weight of the role.
    QFont qtFont() const;
    bool operator==(const TextStyle&) const = default;
};

// Returns the color of a role, legible on the window color in dark and light themes. The contrast of secondary text is
// at least 4.5 to 1 if the theme's own text reaches that.
QColor roleColor(Color color, const QPalette& palette);

// Returns whether the windows are darker than their texts.
bool isDark(const QPalette& palette);

// Returns a color for the style Fusion to use instead of the window's. Fusion draws the outline of a box slightly
// darker than that color. With the window's own color the outline would be invisible in dark themes. With the returned
// color, the contrast of the outline with the background is at least 3 to 1 if the text reaches that.
QColor outlineBaseColor(const QColor& text, const QColor& background);

// Returns the color of a separator. Its contrast with the background is at least 1.5 to 1 if the text reaches that.
QColor separatorColor(const QColor& text, const QColor& background);

// Returns the color of a scroll bar's handle. Its contrast with a groove in about the color of buttons is at least 3 to
// 1 if the theme's own text reaches that.
QColor handleColor(const QPalette& palette);

// Returns the contrast ratio as WCAG 2 defines it, from 1 to 21.
double contrast(const QColor& one, const QColor& other);

}  // namespace kovra
