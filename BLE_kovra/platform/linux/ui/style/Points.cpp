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

constexpr double usualResolution = 96;   // dots an inch
constexpr double largestUsualFont = 11;  // points of type
constexpr double typePointsAnInch = 72;
constexpr double leastUsualGap = 6;  // points, where the style knows none or does not grow with the fonts

double resolution() {
    const QScreen* screen = QGuiApplication::primaryScreen();
    return screen == nullptr ? usualResolution : screen->logicalDotsPerInchY();
}

double fontSize() {
    const QFont font = QApplication::font();
    return font.pointSizeF() > 0 ? font.pointSizeF() : font.pixelSize() * typePointsAnInch / resolution();
}

}  // namespace

double fontScale() { return resolution() / usualResolution * std::max(1.0, fontSize() / largestUsualFont); }

int pixels(double points) {
    const double length = points * fontScale();
    return length < farthest ? static_cast<int>(std::lround(std::max(0.0, length))) : farthest;
}

int usualGap(const QWidget& around) {
    const int ofStyle = around.style()->pixelMetric(QStyle::PM_LayoutHorizontalSpacing, nullptr, &around);
    return std::max(ofStyle, pixels(leastUsualGap));
}

double points(int pixels) { return pixels / fontScale(); }

}  // namespace kovra
