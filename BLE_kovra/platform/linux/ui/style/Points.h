#pragma once

class QWidget;

namespace kovra {

// The size of the desktop's font relative to common defaults. It is 1 for fonts of up to 11 points at 96 dots per inch,
// and grows with larger fonts and a higher font resolution.
double fontScale();

// Convert between the points of a view and pixels of the toolkit. A point is one pixel at font scale 1. Results are at
// most `unboundedLength`.
int pixels(double points);
double points(int pixels);

// The desktop's spacing between related controls, in pixels.
int defaultSpacing(const QWidget& widget);

constexpr int unboundedLength = 1'000'000;

}  // namespace kovra
