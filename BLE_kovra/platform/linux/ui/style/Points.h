#pragma once

class QWidget;

namespace kovra {

// How much larger than usual the desktop has its fonts. It is 1 at the sizes that desktops come with, which lie between
// 9 and 11 points of type at 96 dots an inch; larger fonts, and a finer resolution for fonts, make it more.
double fontScale();

// A view's lengths grow with the fonts: a point is one of the toolkit's pixels at font scale 1. To whole pixels; what
// is unbounded, or more than any screen has, gives `farthest`.
int pixels(double points);
double points(int pixels);

// What the desktop leaves between things that belong together, in pixels.
int usualGap(const QWidget& around);

constexpr int farthest = 1'000'000;

}  // namespace kovra
