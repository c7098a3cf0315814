#pragma once

#include <QColor>
#include <QImage>
#include <algorithm>
#include <cmath>

namespace kovra {

// As WCAG defines it: from 0, black, to 1, white.
inline double luminance(QRgb colour) {
    const auto linear = [](int value) {
        const double part = value / 255.0;
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(qRed(colour)) + 0.7152 * linear(qGreen(colour)) + 0.0722 * linear(qBlue(colour));
}

// The share of pixels that stand out from the background, by a contrast of 3 to 1 at least.
inline double standingOut(const QImage& image, const QColor& background) {
    const double behind = luminance(background.rgb());
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const double seen = luminance(image.pixel(x, y));
            if ((std::max(seen, behind) + 0.05) / (std::min(seen, behind) + 0.05) >= 3) ++count;
        }
    }
    return double(count) / (image.width() * image.height());
}

}  // namespace kovra
