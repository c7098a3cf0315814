#include "BLE_kovra/platform/linux/ui/style/DesktopColors.h"

#include <QApplication>
#include <QEvent>

#include "BLE_kovra/platform/linux/ui/style/TextStyle.h"

namespace kovra {

namespace {

// The value of the setting for dark windows; 0 means no preference, 2 light ones.
constexpr unsigned dark = 1;

}  // namespace

DesktopColors::DesktopColors() { qApp->installEventFilter(this); }

PortalSettings::Setting DesktopColors::setting() {
    return {.group = QStringLiteral("org.freedesktop.appearance"),
            .key = QStringLiteral("color-scheme"),
            .changed = [this](const QVariant& value) { prefer(value.toUInt() == dark); }};
}

bool DesktopColors::eventFilter(QObject* watched, QEvent* event) {
    // The toolkit's theme may change its colors again after the user's preference has arrived.
    if (watched == qApp && event->type() == QEvent::ApplicationPaletteChange)
        QMetaObject::invokeMethod(this, &DesktopColors::apply, Qt::QueuedConnection);
    return false;
}

void DesktopColors::prefer(bool darkIsPreferred) {
    darkIsPreferred_ = darkIsPreferred;
    apply();
}

void DesktopColors::apply() {
    if (darkIsPreferred_ && !isDark(QApplication::palette())) {
        isApplied_ = true;
        QApplication::setPalette(darkColors());
    } else if (!darkIsPreferred_ && isApplied_) {
        isApplied_ = false;
        QApplication::setPalette(QPalette());  // the theme's own
    }
}

QPalette darkColors() {
    QPalette colors(QColor(0x3A, 0x3A, 0x3A), QColor(0x24, 0x24, 0x24));
    colors.setColor(QPalette::Base, QColor(0x1E, 0x1E, 0x1E));
    colors.setColor(QPalette::AlternateBase, QColor(0x2E, 0x2E, 0x2E));
    colors.setColor(QPalette::Highlight, QColor(0x35, 0x84, 0xE4));
    colors.setColor(QPalette::HighlightedText, Qt::white);
    colors.setColor(QPalette::Link, QColor(0x78, 0xAE, 0xED));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        colors.setColor(QPalette::Disabled, role, QColor(0x91, 0x91, 0x91));
    return colors;
}

}  // namespace kovra
