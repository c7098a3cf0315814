#pragma once

class QWidget;

namespace kovra {

// Returns the size of the desktop's font relative to common defaults. The scale is 1 for fonts of up to 11 points at 96
// dots per inch. It grows with larger fonts and with the font resolution.
double fontScale();

// Convert between the points of a view and pixels of the toolkit. A point is one pixel at font scale 1. pixels()
// returns at least 0 and at most `unboundedLength`.
int pixels(double points);
double points(int pixels);

// Returns the desktop's spacing between related controls, in pixels.
int defaultSpacing(const QWidget& widget);

constexpr int unboundedLength = 1'000'000;

}  // namespace kovra
