#include "BLE_kovra/platform/linux/ui/style/Points.h"

#include <QApplication>
#include <QFont>
#include <QScreen>
#include <QStyle>
#include <QWidget>
#include <algorithm>
#include <cmath>

namespace kovra {

namespace {

constexpr double usualResolution = 96;   // dots per inch
constexpr double largestUsualFont = 11;  // typographic points
constexpr double pointsPerInch = 72;
constexpr double minimumSpacing = 6;  // points; some styles have none or do not scale it with the font

double resolution() {
    const QScreen* screen = QGuiApplication::primaryScreen();
    return screen == nullptr ? usualResolution : screen->logicalDotsPerInchY();
}

double fontSize() {
    const QFont font = QApplication::font();
    return font.pointSizeF() > 0 ? font.pointSizeF() : font.pixelSize() * pointsPerInch / resolution();
}

}  // namespace

double fontScale() { return resolution() / usualResolution * std::max(1.0, fontSize() / largestUsualFont); }

int pixels(double points) {
    const double length = points * fontScale();
    return length < unboundedLength ? static_cast<int>(std::lround(std::max(0.0, length))) : unboundedLength;
}

int defaultSpacing(const QWidget& widget) {
    const int styleSpacing = widget.style()->pixelMetric(QStyle::PM_LayoutHorizontalSpacing, nullptr, &widget);
    return std::max(styleSpacing, pixels(minimumSpacing));
}

double points(int pixels) { return pixels / fontScale(); }

}  // namespace kovra
