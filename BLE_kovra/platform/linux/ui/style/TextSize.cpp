#include "BLE_kovra/platform/linux/ui/style/TextSize.h"

#include <QApplication>
#include <QString>

namespace kovra {

namespace {

// The range of the setting.
constexpr double smallest = 0.5;
constexpr double largest = 3;

}  // namespace

bool TextSize::isUnknownToToolkit() {
    const QStringList desktops = qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(':');
    return QGuiApplication::platformName().startsWith(QLatin1String("wayland")) &&
           desktops.contains(QLatin1String("GNOME"));
}

TextSize::TextSize(bool isUnknown) : isUnknown_(isUnknown), font_(QApplication::font()) {}

PortalSettings::Setting TextSize::setting() {
    return {.group = QStringLiteral("org.gnome.desktop.interface"),
            .key = QStringLiteral("text-scaling-factor"),
            .changed = [this](const QVariant& value) { apply(value.toDouble()); }};
}

void TextSize::apply(double factor) const {
    if (!isUnknown_ || !(factor >= smallest && factor <= largest)) return;
    QFont font = font_;
    if (font.pointSizeF() > 0)
        font.setPointSizeF(font.pointSizeF() * factor);
    else
        font.setPixelSize(qRound(font.pixelSize() * factor));
    if (font != QApplication::font()) QApplication::setFont(font);
}

}  // namespace kovra
