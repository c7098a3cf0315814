#include "BLE_kovra/platform/linux/ui/style/TextStyle.h"

#include <QApplication>
#include <QPalette>
#include <algorithm>
#include <cmath>

namespace kovra {

namespace {

constexpr double textContrast = 4.5;
constexpr double separatorContrast = 1.5;
// More than the promised 3: round lines lose contrast to antialiasing, and the groove of a scroll bar differs a little
// from the color of a button.
constexpr double lineContrast = 3.6;

// Returns the size of the font, relative to that of the desktop's font.
double size(Font font) {
    switch (font) {
        case Font::subheadline:
            return 0.95;
        case Font::caption:
            return 0.9;
        case Font::caption2:
            return 0.85;
        case Font::standard:
        case Font::headline:
        case Font::body:
            break;
    }
    return 1;
}

double luminance(const QColor& color) {
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

QColor blend(const QColor& text, const QColor& background, double ratio) {
    const auto part = [ratio](double one, double other) {
        return static_cast<float>(one * ratio + other * (1 - ratio));
    };
    return QColor::fromRgbF(part(text.redF(), background.redF()), part(text.greenF(), background.greenF()),
                            part(text.blueF(), background.blueF()));
}

// Returns the palest blend of text and background that has the contrast and at least this share of text, in steps of 5
// percent.
QColor palest(const QColor& text, const QColor& background, double ratio, double leastContrast) {
    while (ratio < 1 && contrast(blend(text, background, ratio), background) < leastContrast) ratio += 0.05;
    return blend(text, background, std::min(ratio, 1.0));
}

QColor secondary(const QPalette& palette) {
    return palest(palette.color(QPalette::WindowText), palette.color(QPalette::Window), 0.65, textContrast);
}

}  // namespace

QFont TextStyle::qtFont() const {
    QFont made = QApplication::font();
    if (made.pointSizeF() > 0)
        made.setPointSizeF(made.pointSizeF() * size(font));
    else
        made.setPixelSize(std::max(1, static_cast<int>(std::lround(made.pixelSize() * size(font)))));
    if (bold || font == Font::headline) made.setBold(true);
    return made;
}

QColor outlineBaseColor(const QColor& text, const QColor& background) {
    const auto standsOut = [&](const QColor& source) {
        const QColor ofBox = source.darker(140).lighter(110), ofRing = source.darker(150);
        return contrast(ofBox, background) >= lineContrast && contrast(ofRing, background) >= lineContrast;
    };
    double ratio = 0;
    while (ratio < 1 && !standsOut(blend(text, background, ratio))) ratio += 0.05;
    return blend(text, background, std::min(ratio, 1.0));
}

QColor separatorColor(const QColor& text, const QColor& background) {
    return palest(text, background, 0.2, separatorContrast);
}

bool isDark(const QPalette& palette) {
    return luminance(palette.color(QPalette::Window)) < luminance(palette.color(QPalette::WindowText));
}

QColor handleColor(const QPalette& palette) {
    return palest(palette.color(QPalette::WindowText), palette.color(QPalette::Button), 0.4, lineContrast);
}

QColor roleColor(Color color, const QPalette& palette) {
    switch (color) {
        case Color::green:
            return isDark(palette) ? QColor(0x33, 0xD1, 0x7A) : QColor(0x1F, 0x8F, 0x4F);
        case Color::gray: {
            const int shade = qGray(secondary(palette).rgb());
            return {shade, shade, shade};
        }
        case Color::secondary:
            return secondary(palette);
        case Color::primary:
            break;
    }
    return palette.color(QPalette::WindowText);
}

double contrast(const QColor& one, const QColor& other) {
    const double a = luminance(one);
    const double b = luminance(other);
    return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}

}  // namespace kovra
