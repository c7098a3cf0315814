#pragma once

#include <QColor>
#include <QImage>
#include <algorithm>
#include <cmath>

namespace kovra {

// Returns the relative luminance as WCAG defines it, from 0 for black to 1 for white.
inline double luminance(QRgb color) {
    const auto linear = [](int value) {
        const double part = value / 255.0;
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(qRed(color)) + 0.7152 * linear(qGreen(color)) + 0.0722 * linear(qBlue(color));
}

// Returns the contrast ratio as WCAG defines it, from 1 to 21.
inline double contrastBetween(QRgb one, QRgb other) {
    const double a = luminance(one);
    const double b = luminance(other);
    return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}

// Returns the share of pixels whose contrast with the background is at least 3 to 1.
inline double standingOut(const QImage& image, const QColor& background) {
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (contrastBetween(image.pixel(x, y), background.rgb()) >= 3) ++count;
        }
    }
    return double(count) / (image.width() * image.height());
}

}  // namespace kovra
